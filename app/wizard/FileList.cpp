#include "app/wizard/FileList.h"

#include "app/wizard/MainContext.h"
#include "app/wizard/MainTexts.h"

#include <memory>

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

FileRow::FileRow(const FoundRow& found, const QString& icon) : m_found(found), m_icon(icon)
{
    SetTag(TagOf(&found));
}

QString FileRow::GetColumnText(int column) const
{
    return ToQt(ColumnText(m_found.record, static_cast<FileColumn>(column)));
}

QString FileRow::GetColumnImage(int column) const
{
    return column == static_cast<int>(FileColumn::FileName) ? m_icon : QString();
}

FileList::FileList(CListUI& list) : m_list(list)
{
    if (const CListHeaderUI* header = list.GetHeader()) {
        m_head = header->GetItemAt(static_cast<int>(FileColumn::CheckAll));
    }
}

void FileList::Show(const FileGroup& group, const QString& icon, const SelectionMap& selection)
{
    m_list.RemoveAll();
    m_icon = icon;
    m_markedRows = 0;
    std::vector<std::unique_ptr<CListUI::Row>> rows;
    rows.reserve(group.size());
    for (const FoundRow* found : group) {
        auto row = std::make_unique<FileRow>(*found, m_icon);
        row->SetChecked(selection.contains(KeyOf(*found)));
        m_markedRows += row->IsChecked() ? 1 : 0;
        rows.push_back(std::move(row));
    }
    m_list.AddRows(std::move(rows));
}

void FileList::Clear()
{
    m_list.RemoveAll();
    m_list.SetTag(0);
    m_markedRows = 0;
    MarkHead(false);
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
    return m_head->GetUserData() == MarkedData;
}

void FileList::MarkHead(bool isMarked)
{
    m_head->SetUserData(isMarked ? QString(MarkedData) : QStringLiteral("unchecked"));
    m_head->SetText(isMarked ? QStringLiteral("{i checked.png 1 0}")
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
    std::vector<const FileRecord*> records;
    records.reserve(static_cast<std::size_t>(m_list.GetCount()));
    for (int i = 0; i < m_list.GetCount(); ++i) {
        records.push_back(&static_cast<const FileRow*>(m_list.GetItemAt(i))->Found().record);
    }
    const std::vector<std::uint32_t> ranks = SortRanks(records, sortedBy);
    for (int i = 0; i < m_list.GetCount(); ++i) {
        static_cast<FileRow*>(m_list.GetItemAt(i))->rank = ranks[static_cast<std::size_t>(i)];
    }
    m_list.SortItems(CompareRanks, direction);
}
