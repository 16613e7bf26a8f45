#include "ui/list/ListElementUI.h"

#include "ui/list/ListUI.h"
#include "ui/markup/Values.h"

namespace {

constexpr int MaxColumns = 64;

}  // namespace

CListImageTextElementUI::Columns& CListImageTextElementUI::OwnColumns()
{
    if (!m_columns) {
        m_columns = std::make_unique<Columns>();
    }
    return *m_columns;
}

QString CListImageTextElementUI::GetColumnText(int column) const
{
    return m_columns && column >= 0 && column < static_cast<int>(m_columns->texts.size())
               ? m_columns->texts[static_cast<std::size_t>(column)]
               : QString();
}

void CListImageTextElementUI::SetColumnText(int column, const QString& text)
{
    if (column < 0 || column >= MaxColumns) {
        return;
    }
    const auto index = static_cast<std::size_t>(column);
    std::vector<QString>& texts = OwnColumns().texts;
    if (texts.size() <= index) {
        texts.resize(index + 1);
    }
    texts[index] = text;
    Invalidate();
}

QString CListImageTextElementUI::GetColumnImage(int column) const
{
    if (!m_columns) {
        return {};
    }
    for (const ColumnImage& image : m_columns->images) {
        if (image.column == column) {
            return image.imageText;
        }
    }
    return {};
}

void CListImageTextElementUI::SetColumnImage(int column, const QString& imageText)
{
    std::vector<ColumnImage>& images = OwnColumns().images;
    std::erase_if(images, [column](const ColumnImage& image) { return image.column == column; });
    if (!imageText.isEmpty()) {
        images.push_back({column, imageText});
    }
    Invalidate();
}

void CListImageTextElementUI::SetChecked(bool isChecked)
{
    if (m_isChecked != isChecked) {
        m_isChecked = isChecked;
        Invalidate();
    }
}

void CListImageTextElementUI::ToggleCheck()
{
    SetChecked(!m_isChecked);
    SendNotify(NotifyListCheckClick);
}

void CListImageTextElementUI::SetVisible(bool isVisible)
{
    CControlUI::SetVisible(isVisible);
    if (m_list != nullptr) {
        m_list->RefreshRow(*this);
    }
}

void CListImageTextElementUI::SetEnabled(bool isEnabled)
{
    CControlUI::SetEnabled(isEnabled);
    Invalidate();
}

void CListImageTextElementUI::Invalidate()
{
    // The whole list at once: telling the view of each of a hundred thousand rows would take seconds.
    if (m_list != nullptr) {
        m_list->Invalidate();
    }
}

CControlUI* CListImageTextElementUI::GetParent() const
{
    return m_list;
}

const Skin* CListImageTextElementUI::GetSkin() const
{
    return m_list != nullptr ? m_list->GetSkin() : nullptr;
}

bool CListImageTextElementUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CListImageTextElementUI>, 1> Table = {{
        {"height",
         [](CListImageTextElementUI& row, const QString& text) {
             row.m_height = std::max(ParseNumber(text), 0);
             if (row.m_list != nullptr) {
                 row.m_list->RefreshRow(row);
             }
         }},
    }};
    return SetFromTable(Table, *this, name, value) || CControlUI::ReadAttribute(name, value);
}
