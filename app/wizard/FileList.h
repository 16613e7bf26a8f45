// The list of found files on page 3: one group at a time, its marks, its headers, and which of its files are listed.
#pragma once

#include "results/ExtensionGroups.h"
#include "results/NameFilter.h"
#include "results/RowOrder.h"
#include "results/SelectionMap.h"
#include "ui/list/ListUI.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

// A found file. Texts are made when they are shown: there can be a hundred thousand rows. Its tag is the FoundRow.
class FileRow : public CListImageTextElementUI
{
public:
    // What all rows have in common.
    struct Shared
    {
        QString icon;
        std::function<QString(const FoundRow& found)> toolTip;
    };

    // Both outlive the row.
    FileRow(const FoundRow& found, const Shared& shared);

    QString GetColumnText(int column) const override;
    QString GetColumnImage(int column) const override;
    QString GetColumnBadge(int column) const override;
    QString GetToolTip() const override;
    const FoundRow& Found() const { return m_found; }

    std::uint32_t rank = 0;  // under the header that sorts

private:
    const FoundRow& m_found;
    const Shared& m_shared;
};

class FileList
{
public:
    struct Sorting
    {
        FileColumn header = FileColumn::FileName;
        SortDirection direction = 0;
    };

    // The selection tells which rows have a mark.
    FileList(CListUI& list, const SelectionMap& selection) : m_list(list), m_selection(selection) {}

    // What is shown when the mouse rests on a row.
    void SetToolTips(std::function<QString(const FoundRow& found)> toolTip);
    // The files of a group, in its order, as far as the filter takes them. The rows refer to the group's files.
    void Show(const FileGroup& group, const QString& icon);
    // From now on, also for groups that are shown later. The current row stays current if it stays listed.
    void Filter(const NameFilter& filter);
    void Clear();
    void SelectFirst() { m_list.SelectItem(0); }
    // Without anybody being told; does nothing for a file that is not listed.
    void Reselect(const FoundRow* found);
    // Null without a current row.
    const FoundRow* Current() const;
    // Files of the group, whether listed or not.
    int Count() const { return static_cast<int>(m_files.size()); }
    int ListedCount() const { return m_list.GetCount(); }
    int MarkedRows() const { return m_markedRows; }
    void SetMarkedRows(int count) { m_markedRows = count; }
    void MarkAll(bool isMarked);

    // The mark of the head: all rows have theirs.
    bool IsHeadMarked() const;
    void MarkHead(bool isMarked) const;
    CListHeaderItemUI* Head() const;

    // A click on one of the other headers.
    void OnHeaderClick(CListHeaderItemUI& header);
    // How the group is sorted; nothing for one that stands in its own order.
    const std::optional<Sorting>& Sorted() const { return m_sorting; }
    void Sort(const Sorting& sorting);

private:
    int ColumnOf(const CListHeaderItemUI& header) const;
    void ListRows(const FoundRow* current);

    CListUI& m_list;
    const SelectionMap& m_selection;
    FileRow::Shared m_shared;  // by all rows
    FileGroup m_files;         // of the group, in the order that the list has
    NameFilter m_filter;
    std::optional<Sorting> m_sorting;
    int m_markedRows = 0;  // a wrong number can stand there; see ResultPage
};
