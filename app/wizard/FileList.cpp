#include "app/wizard/FileList.h"

#include "app/wizard/MainContext.h"
#include "app/wizard/MainTexts.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace {

const QLatin1String BackImage("bkimage");
const QLatin1String MarkedData("checked");

int CompareRanks(const CListUI::Row& a, const CListUI::Row& b, std::intptr_t direction)
{
    // The list holds no other rows.
    const std::uint32_t left = static_cast<const FileRow&>(a).rank;
    const std::uint32_t right = static_cast<const FileRow&>(b).rank;
    if (left == right) {
        return 0;
    }
    return (left < right) == (direction != -1) ? -1 : 1;
}

}  // namespace

FileRow::FileRow(const FoundRow& found, const Shared& shared) : m_found(found), m_shared(shared)
{
    SetTag(TagOf(&found));
}

QString FileRow::GetColumnText(int column) const
{
    return ToQt(ColumnText(m_found.record, static_cast<FileColumn>(column)));
}

QString FileRow::GetColumnImage(int column) const
{
    return column == static_cast<int>(FileColumn::FileName) ? m_shared.icon : QString();
}

QString FileRow::GetColumnBadge(int) const
{
    const FileRecord& record = m_found.record;
    return record.IsFolder == 0 && record.HeadIntact == 0 ? QStringLiteral("file='head_lost.png'")
                                                          : QString();
}

QString FileRow::GetToolTip() const
{
    return m_shared.toolTip ? m_shared.toolTip(m_found) : QString();
}

void FileList::SetToolTips(std::function<QString(const FoundRow& found)> toolTip)
{
    m_shared.toolTip = std::move(toolTip);
}

CListHeaderItemUI* FileList::Head() const
{
    return m_list.GetHeader()->GetItemAt(static_cast<int>(FileColumn::CheckAll));
}

void FileList::Show(const FileGroup& group, const QString& icon)
{
    m_shared.icon = icon;
    m_sorting.reset();
    m_files = group;
    m_markedRows = static_cast<int>(
        std::count_if(m_files.begin(), m_files.end(), [this](const FoundRow* found) {
            return m_selection.contains(KeyOf(*found));
        }));
    ListRows(nullptr);
}

void FileList::Filter(const NameFilter& filter)
{
    m_filter = filter;
    ListRows(Current());
}

void FileList::ListRows(const FoundRow* current)
{
    // Not both at once: there can be a hundred thousand.
    m_list.RemoveAll();
    std::vector<std::unique_ptr<CListUI::Row>> rows;
    int currentRow = -1;
    for (const FoundRow* found : m_files) {
        if (!m_filter.Takes(found->record.NameText())) {
            continue;
        }
        currentRow = found == current ? static_cast<int>(rows.size()) : currentRow;
        rows.push_back(std::make_unique<FileRow>(*found, m_shared));
        rows.back()->SetChecked(m_selection.contains(KeyOf(*found)));
    }
    m_list.ReplaceRows(std::move(rows), currentRow);
}

void FileList::Clear()
{
    m_list.RemoveAll();
    m_list.SetTag(0);
    m_files.clear();
    m_markedRows = 0;
    MarkHead(false);
}

void FileList::Reselect(const FoundRow* found)
{
    if (found != nullptr) {
        ListRows(found);
    }
}

const FoundRow* FileList::Current() const
{
    const CListUI::Row* row = m_list.GetItemAt(m_list.GetCurSel());
    return row != nullptr ? PointerOf<const FoundRow>(row->GetTag()) : nullptr;
}

void FileList::MarkAll(bool isMarked)
{
    for (int i = 0; i < m_list.GetCount(); ++i) {
        m_list.GetItemAt(i)->SetChecked(isMarked);
    }
}

bool FileList::IsHeadMarked() const
{
    return Head()->GetUserData() == MarkedData;
}

void FileList::MarkHead(bool isMarked) const
{
    Head()->SetUserData(isMarked ? QString(MarkedData) : QStringLiteral("unchecked"));
    Head()->SetText(isMarked ? QStringLiteral("{i checked.png 1 0}")
                             : QStringLiteral("{i unchecked.png 1 0}"));
}

int FileList::ColumnOf(const CListHeaderItemUI& header) const
{
    for (int i = 0; i < m_list.GetHeader()->GetCount(); ++i) {
        if (m_list.GetHeader()->GetItemAt(i) == &header) {
            return i;
        }
    }
    return 0;
}

void FileList::OnHeaderClick(CListHeaderItemUI& header)
{
    const int column = ColumnOf(header);
    if (column <= static_cast<int>(FileColumn::CheckAll) || column >= FileColumnCount) {
        return;
    }
    for (int i = 0; i < m_list.GetHeader()->GetCount(); ++i) {
        m_list.GetHeader()->GetItemAt(i)->SetAttribute(
            BackImage, QStringLiteral("file='list_header_bg.png' corner='0,1,0,1'"));
    }
    const auto sortedBy = static_cast<FileColumn>(column);
    const int direction = NextDirection(sortedBy, static_cast<int>(header.GetTag()));
    header.SetTag(direction);
    header.SetAttribute(BackImage,
                        direction == 1
                            ? QStringLiteral("file='list_header_asc.png' corner='0,1,13,1'")
                            : QStringLiteral("file='list_header_desc.png' corner='0,1,13,1'"));
    Sort({sortedBy, direction});
}

void FileList::Sort(const Sorting& sorting)
{
    m_sorting = sorting;
    std::vector<const FileRecord*> records;
    records.reserve(m_files.size());
    for (const FoundRow* found : m_files) {
        records.push_back(&found->record);
    }
    const std::vector<std::uint32_t> ranks = SortRanks(records, sorting.header);
    // What is listed stands in the same order as all files do, with gaps.
    std::vector<std::pair<std::uint32_t, const FoundRow*>> ranked;
    ranked.reserve(m_files.size());
    int listed = 0;
    for (std::size_t i = 0; i < m_files.size(); ++i) {
        ranked.emplace_back(ranks[i], m_files[i]);
        auto* row = static_cast<FileRow*>(m_list.GetItemAt(listed));
        if (row != nullptr && &row->Found() == m_files[i]) {
            row->rank = ranks[i];
            ++listed;
        }
    }
    m_list.SortItems(CompareRanks, sorting.direction);
    std::stable_sort(ranked.begin(), ranked.end(), [&sorting](const auto& a, const auto& b) {
        return sorting.direction == -1 ? b.first < a.first : a.first < b.first;
    });
    for (std::size_t i = 0; i < ranked.size(); ++i) {
        m_files[i] = ranked[i].second;
    }
}
