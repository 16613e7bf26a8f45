#include "ui/controls/ContainerUI.h"

#include <QPainter>

#include <utility>

CContainerUI::CContainerUI(std::shared_ptr<Skin> skin, Qt::Orientation direction)
    : WidgetControl<QWidget>(std::move(skin)), m_layout(new BoxLayout(this, direction))
{
}

int CContainerUI::GetCount() const
{
    return m_layout->count();
}

CControlUI* CContainerUI::GetItemAt(int index) const
{
    QLayoutItem* item = m_layout->itemAt(index);
    return item != nullptr ? dynamic_cast<CControlUI*>(item->widget()) : nullptr;
}

bool CContainerUI::Add(std::unique_ptr<CControlUI>& child)
{
    return AddAt(child, -1);
}

bool CContainerUI::AddAt(std::unique_ptr<CControlUI>& child, int index)
{
    auto* visual = dynamic_cast<VisualControl*>(child.get());
    if (visual == nullptr) {
        return false;
    }
    // From here on the widget that it lies in owns it.
    (void)child.release();
    m_layout->Put(*visual, index);
    return true;
}

void CContainerUI::RemoveAt(int index)
{
    const std::unique_ptr<QLayoutItem> item(m_layout->takeAt(index));
    if (item) {
        delete item->widget();
    }
}

bool CContainerUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CContainerUI>, 3> Table = {{
        {"inset",
         [](CContainerUI& container, const QString& text) {
             container.m_layout->setContentsMargins(ParseMargins(text));
         }},
        {"childpadding",
         [](CContainerUI& container, const QString& text) {
             container.m_layout->setSpacing(ParseNumber(text));
         }},
        {"childalign",
         [](CContainerUI& container, const QString& text) {
             container.m_layout->SetCrossAlignment(
                 ParseAlignment(text, Qt::AlignLeft | Qt::AlignTop));
         }},
    }};
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

void CContainerUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    DrawText(painter, rect());
}

CHorizontalLayoutUI::CHorizontalLayoutUI(std::shared_ptr<Skin> skin)
    : CContainerUI(std::move(skin), Qt::Horizontal)
{
}

CVerticalLayoutUI::CVerticalLayoutUI(std::shared_ptr<Skin> skin)
    : CContainerUI(std::move(skin), Qt::Vertical)
{
}

CTabLayoutUI::CTabLayoutUI(std::shared_ptr<Skin> skin) : CContainerUI(std::move(skin), Qt::Vertical)
{
}

bool CTabLayoutUI::AddAt(std::unique_ptr<CControlUI>& child, int index)
{
    if (!CContainerUI::AddAt(child, index)) {
        return false;
    }
    if (m_selected < 0) {
        m_selected = 0;
    } else if (index >= 0 && index <= m_selected) {
        ++m_selected;
    }
    ShowSelected();
    return true;
}

bool CTabLayoutUI::SelectItem(int index)
{
    if (index < 0 || index >= GetCount()) {
        return false;
    }
    m_selected = index;
    ShowSelected();
    return true;
}

void CTabLayoutUI::ShowSelected()
{
    for (int i = 0; i < GetCount(); ++i) {
        if (auto* page = dynamic_cast<VisualControl*>(GetItemAt(i))) {
            page->SetSuppressed(i != m_selected);
        }
    }
}

void CTabLayoutUI::OnBuilt()
{
    SelectItem(m_firstSelected);
}

bool CTabLayoutUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CTabLayoutUI>, 1> Table = {{
        {"selectedid",
         [](CTabLayoutUI& tabs, const QString& text) { tabs.m_firstSelected = ParseNumber(text); }},
    }};
    return SetFromTable(Table, *this, name, value) || CContainerUI::ReadAttribute(name, value);
}
