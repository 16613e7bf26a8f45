// The list of found files on page 3: one group at a time, its marks, and its headers.
#pragma once

#include "results/ExtensionGroups.h"
#include "results/RowOrder.h"
#include "results/SelectionMap.h"
#include "ui/list/ListUI.h"

#include <QString>

#include <cstdint>

// A found file. Texts are made when they are shown: there can be a hundred thousand rows. Its tag is the FoundRow.
class FileRow : public CListImageTextElementUI
{
public:
    // Both outlive the row.
    FileRow(const FoundRow& found, const QString& icon);

    QString GetColumnText(int column) const override;
    QString GetColumnImage(int column) const override;
    const FoundRow& Found() const { return m_found; }

    std::uint32_t rank = 0;  // under the header that sorts

private:
    const FoundRow& m_found;
    const QString& m_icon;
};

class FileList
{
public:
    explicit FileList(CListUI& list);

    // The rows of a group, in its order; those that are selected have their mark. The rows refer to the group's files.
    void Show(const FileGroup& group, const QString& icon, const SelectionMap& selection);
    void Clear();
    void SelectFirst() { m_list.SelectItem(0); }
    // Null without a current row.
    const FoundRow* Current() const;
    int Count() const { return m_list.GetCount(); }
    int MarkedRows() const { return m_markedRows; }
    void SetMarkedRows(int count) { m_markedRows = count; }
    void MarkAll(bool isMarked);

    // The mark of the head: all rows have theirs.
    bool IsHeadMarked() const;
    void MarkHead(bool isMarked);
    CListHeaderItemUI* Head() const { return m_head; }

    // A click on one of the other headers.
    void OnHeaderClick(CListHeaderItemUI& header);

private:
    int ColumnOf(const CListHeaderItemUI& header) const;

    CListUI& m_list;
    CListHeaderItemUI* m_head = nullptr;
    QString m_icon;        // of all rows
    int m_markedRows = 0;  // a wrong number can stand there; see ResultPage
};
