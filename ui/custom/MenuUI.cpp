#include "ui/custom/MenuUI.h"

#include <QPainter>
#include <QProxyStyle>
#include <QStyleOption>

#include <algorithm>
#include <utility>

namespace {

constexpr int ArrowRoom = 20;
constexpr int ArrowSize = 4;

// Tells Qt the sizes of the items, which the skin draws.
class MenuStyle : public QProxyStyle
{
public:
    explicit MenuStyle(CMenuUI& menu) : m_menu(menu) { setParent(&menu); }

    QSize sizeFromContents(ContentsType type,
                           const QStyleOption* option,
                           const QSize& size,
                           const QWidget* widget) const override
    {
        return type == CT_MenuItem ? m_menu.ItemSize()
                                   : QProxyStyle::sizeFromContents(type, option, size, widget);
    }
    int pixelMetric(PixelMetric metric,
                    const QStyleOption* option,
                    const QWidget* widget) const override
    {
        if (metric == PM_MenuPanelWidth) {
            return std::max(m_menu.Look().borderSize, 0);
        }
        return metric == PM_MenuHMargin || metric == PM_MenuVMargin
                   ? 0
                   : QProxyStyle::pixelMetric(metric, option, widget);
    }

private:
    CMenuUI& m_menu;
};

}  // namespace

void CMenuElementUI::SetText(const QString& text)
{
    m_text = text;
    if (m_action != nullptr) {
        // Read out, never drawn; a single "&" would mark the letter after it.
        m_action->setText(
            PlainText(text, m_look.hasMarkup).replace(QLatin1Char('&'), QLatin1String("&&")));
    }
}

void CMenuElementUI::SetVisible(bool isVisible)
{
    CControlUI::SetVisible(isVisible);
    if (m_action != nullptr) {
        m_action->setVisible(isVisible);
    }
}

void CMenuElementUI::SetEnabled(bool isEnabled)
{
    CControlUI::SetEnabled(isEnabled);
    if (m_action != nullptr) {
        m_action->setEnabled(isEnabled);
    }
}

void CMenuElementUI::Invalidate()
{
    if (m_parent != nullptr) {
        m_parent->Invalidate();
    }
}

CControlUI* CMenuElementUI::GetParent() const
{
    return m_parent;
}

const Skin* CMenuElementUI::GetSkin() const
{
    return m_parent != nullptr ? m_parent->GetSkin() : nullptr;
}

int CMenuElementUI::GetCount() const
{
    return m_submenu != nullptr ? m_submenu->GetCount() : 0;
}

CControlUI* CMenuElementUI::GetItemAt(int index) const
{
    return m_submenu != nullptr ? m_submenu->GetItemAt(index) : nullptr;
}

bool CMenuElementUI::Add(std::unique_ptr<CControlUI>& child)
{
    if (m_parent == nullptr || dynamic_cast<CMenuElementUI*>(child.get()) == nullptr) {
        return false;
    }
    if (m_submenu == nullptr) {
        auto submenu = std::make_unique<CMenuUI>(m_parent->SharedSkin());
        submenu->m_rowLook = m_parent->m_rowLook;
        submenu->m_look = m_parent->m_look;
        submenu->m_target = m_parent->m_target;
        submenu->m_owner = this;
        m_submenu = submenu.release();
        m_submenu->setParent(m_parent, m_submenu->windowFlags());
        m_action->setMenu(m_submenu);
    }
    return m_submenu->Add(child);
}

CMenuElementUI* CMenuElementUI::GetOwnerElement() const
{
    return m_parent != nullptr ? m_parent->GetOwnerElement() : nullptr;
}

INotificationTarget* CMenuElementUI::FindTarget()
{
    const CMenuUI* menu = m_parent;
    while (menu != nullptr && menu->GetOwnerElement() != nullptr) {
        menu = menu->GetOwnerElement()->m_parent;
    }
    return menu != nullptr ? menu->GetTarget() : nullptr;
}

bool CMenuElementUI::ReadAttribute(const QString& name, const QString& value)
{
    if (SetLookAttribute(m_look, name, value)) {
        SetText(m_text);
        Invalidate();
        return true;
    }
    return CControlUI::ReadAttribute(name, value);
}

void CMenuElementUI::Draw(QPainter& painter,
                          const QRect& area,
                          const RowLook& look,
                          bool isHot) const
{
    const Skin& skin = *GetSkin();
    DrawRowGround(painter, skin, look, area, false, isHot, false);
    skin.DrawImage(painter, area, m_look.backImage);
    QColor color = m_look.textColor == QColor(Qt::black) ? look.textColor : m_look.textColor;
    if (!IsEnabled()) {
        color = look.disabledTextColor;
    }
    DrawRuns(painter, skin, ParseTextMarkup(m_text, m_look.hasMarkup),
             {m_look.font >= 0 ? m_look.font : look.font,
              color,
              {area.marginsRemoved(look.textPadding), Qt::AlignLeft | Qt::AlignVCenter, false}});
    if (m_submenu != nullptr) {
        const QPoint tip(area.right() - ArrowRoom / 2 + ArrowSize, area.center().y());
        painter.setPen(Qt::NoPen);
        painter.setBrush(color);
        painter.drawPolygon(QPolygon(
            {tip, tip + QPoint(-ArrowSize, -ArrowSize), tip + QPoint(-ArrowSize, ArrowSize)}));
    }
}

int CMenuElementUI::ContentWidth(const RowLook& look) const
{
    const TextStyle style = {
        m_look.font >= 0 ? m_look.font : look.font, {}, {QRect(0, 0, 1 << 20, 1 << 20), {}, false}};
    return MeasureRuns(*GetSkin(), ParseTextMarkup(m_text, m_look.hasMarkup), style).size.width() +
           look.textPadding.left() + look.textPadding.right() + ArrowRoom;
}

CMenuUI::CMenuUI(std::shared_ptr<Skin> skin) : WidgetControl<QMenu>(std::move(skin))
{
    m_rowLook.textPadding = {28, 0, 8, 0};
    m_look.backColor = Qt::white;
    setStyle(new MenuStyle(*this));
}

CMenuElementUI* CMenuUI::GetItemAt(int index) const
{
    return index >= 0 && index < GetCount() ? m_elements[static_cast<std::size_t>(index)].get()
                                            : nullptr;
}

bool CMenuUI::Add(std::unique_ptr<CControlUI>& child)
{
    auto* element = dynamic_cast<CMenuElementUI*>(child.get());
    if (element == nullptr) {
        return false;
    }
    (void)child.release();
    m_elements.emplace_back(element);
    element->m_parent = this;
    element->m_action = addAction(QString());
    element->SetText(element->m_text);
    element->SetVisible(element->IsVisible());
    element->SetEnabled(element->IsEnabled());
    connect(element->m_action, &QAction::triggered, this, [element] {
        // Opening a submenu is no choice.
        if (element->m_submenu == nullptr) {
            element->SendNotify(NotifyItemClick);
        }
    });
    return true;
}

QSize CMenuUI::ItemSize() const
{
    int width = std::max(Place().width, 0);
    for (const auto& element : m_elements) {
        width = std::max(width, element->ContentWidth(m_rowLook));
    }
    return {width, m_rowLook.height};
}

bool CMenuUI::ReadAttribute(const QString& name, const QString& value)
{
    return SetRowLook(m_rowLook, name, value) || VisualControl::ReadAttribute(name, value);
}

void CMenuUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    for (const auto& element : m_elements) {
        if (element->IsVisible()) {
            element->Draw(painter, actionGeometry(element->m_action), m_rowLook,
                          activeAction() == element->m_action);
        }
    }
}
