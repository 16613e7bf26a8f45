#include "ui/controls/VisualControl.h"

#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <QWidget>

#include <utility>

namespace {

constexpr int MostShares = 100;

int ParseLength(const QString& value)
{
    return value == QLatin1String("auto") ? ControlPlace::OfContent
                                          : std::max(ParseNumber(value), 0);
}

}  // namespace

bool SetLookAttribute(ControlLook& look, const QString& name, const QString& value)
{
    using Setter = AttributeSetter<ControlLook>;
    static constexpr std::array<Setter, 16> Table = {{
        {"bkcolor",
         [](ControlLook& changed, const QString& text) { changed.backColor = ParseColor(text); }},
        {"hotbkcolor", [](ControlLook& changed,
                          const QString& text) { changed.hotBackColor = ParseColor(text); }},
        {"selectedbkcolor",
         [](ControlLook& changed, const QString& text) {
             changed.selectedBackColor = ParseColor(text);
         }},
        {"bordercolor",
         [](ControlLook& changed, const QString& text) { changed.borderColor = ParseColor(text); }},
        {"bordersize",
         [](ControlLook& changed, const QString& text) { changed.borderSize = ParseNumber(text); }},
        {"bkimage", [](ControlLook& changed, const QString& text) { changed.backImage = text; }},
        {"foreimage", [](ControlLook& changed, const QString& text) { changed.foreImage = text; }},
        {"font",
         [](ControlLook& changed, const QString& text) { changed.font = ParseNumber(text); }},
        {"textcolor",
         [](ControlLook& changed, const QString& text) { changed.textColor = ParseColor(text); }},
        {"hottextcolor", [](ControlLook& changed,
                            const QString& text) { changed.hotTextColor = ParseColor(text); }},
        {"selectedtextcolor",
         [](ControlLook& changed, const QString& text) {
             changed.selectedTextColor = ParseColor(text);
         }},
        {"disabledtextcolor",
         [](ControlLook& changed, const QString& text) {
             changed.disabledTextColor = ParseColor(text);
         }},
        {"textpadding", [](ControlLook& changed,
                           const QString& text) { changed.textPadding = ParseMargins(text); }},
        {"align",
         [](ControlLook& changed, const QString& text) {
             changed.alignment = ParseAlignment(text, changed.alignment);
         }},
        {"showhtml",
         [](ControlLook& changed, const QString& text) { changed.hasMarkup = ParseTruth(text); }},
        {"wordbreak",
         [](ControlLook& changed, const QString& text) { changed.wraps = ParseTruth(text); }},
    }};
    return SetFromTable(Table, look, name, value);
}

QString PlainToolTip(const QString& text)
{
    // A name without a blank would make a window as wide as it is long.
    constexpr int UnbrokenLetters = 40;
    QString broken;
    int unbroken = 0;
    for (const QChar letter : text) {
        unbroken = letter.isSpace() ? 0 : unbroken + 1;
        if (unbroken > UnbrokenLetters && !letter.isLowSurrogate() && !letter.isMark()) {
            broken += QChar(0x200B);
            unbroken = 1;
        }
        broken += letter;
    }
    // Qt guesses whether a text is markup of its own; told that it is, and with all signs escaped, it shows the text as it is.
    return QStringLiteral("<qt>%1</qt>")
        .arg(broken.toHtmlEscaped().replace(QLatin1Char('\n'), QLatin1String("<br>")));
}

void ShowPlainToolTip(const QPoint& place, const QString& text, QWidget& widget)
{
    QToolTip::showText(place, PlainToolTip(text), &widget);
}

VisualControl::VisualControl(std::shared_ptr<Skin> skin) : m_skin(std::move(skin)) {}

void VisualControl::SetName(const QString& name)
{
    CControlUI::SetName(name);
    Widget()->setObjectName(name);
}

void VisualControl::SetText(const QString& text)
{
    m_text = text;
    RefreshText();
}

void VisualControl::RefreshText()
{
    m_runs = ParseTextMarkup(m_text, m_look.hasMarkup);
    // What is read out is the text alone, or what the markup says for a control without one.
    QString name = m_accessibleName.isEmpty() ? PlainText(m_runs) : m_accessibleName;
    Widget()->setAccessibleName(name.isEmpty() ? Widget()->toolTip() : name);
    OnTextChanged();
    Invalidate();
    if (m_place.width == ControlPlace::OfContent || m_place.height == ControlPlace::OfContent) {
        Widget()->updateGeometry();
    }
}

void VisualControl::SetVisible(bool isVisible)
{
    CControlUI::SetVisible(isVisible);
    RefreshVisible();
}

void VisualControl::SetSuppressed(bool isSuppressed)
{
    m_isSuppressed = isSuppressed;
    RefreshVisible();
}

void VisualControl::RefreshVisible()
{
    const bool shows = IsVisible() && !m_isSuppressed;
    // Shown before it lies in a window, it would become one.
    if (!shows || Widget()->parentWidget() != nullptr) {
        Widget()->setVisible(shows);
    }
}

void VisualControl::SetEnabled(bool isEnabled)
{
    CControlUI::SetEnabled(isEnabled);
    Widget()->setEnabled(isEnabled);
}

void VisualControl::Invalidate()
{
    Widget()->update();
}

CControlUI* VisualControl::GetParent() const
{
    const QWidget* own = Widget();
    for (QWidget* widget = own->parentWidget(); widget != nullptr;
         widget = widget->parentWidget()) {
        if (auto* control = dynamic_cast<CControlUI*>(widget)) {
            return control;
        }
    }
    return nullptr;
}

ControlPlace& VisualControl::ChangePlace()
{
    Widget()->updateGeometry();
    return m_place;
}

TextStyle VisualControl::StyleIn(const QRect& area) const
{
    return {m_look.font,
            TextColor(),
            {area.marginsRemoved(m_look.textPadding), m_look.alignment, m_look.wraps}};
}

QSize VisualControl::ContentSize() const
{
    TextStyle style = StyleIn(QRect(0, 0, 1 << 20, 1 << 20));
    style.area.wraps = false;
    return MeasureRuns(*m_skin, m_runs, style).size.grownBy(m_look.textPadding);
}

TextLayout VisualControl::PlacedText() const
{
    return MeasureRuns(*m_skin, m_runs, StyleIn(Widget()->rect()));
}

bool VisualControl::IsHot() const
{
    QWidget* widget = Widget();
    return widget->isEnabled() && widget->underMouse();
}

QColor VisualControl::TextColor() const
{
    if (!Widget()->isEnabled()) {
        return m_look.disabledTextColor;
    }
    if (IsSelectedLook() && m_look.selectedTextColor.isValid()) {
        return m_look.selectedTextColor;
    }
    return IsHot() && m_look.hotTextColor.isValid() ? m_look.hotTextColor : m_look.textColor;
}

void VisualControl::DrawGround(QPainter& painter, const QRect& area) const
{
    QColor color = m_look.backColor;
    if (IsSelectedLook() && m_look.selectedBackColor.isValid()) {
        color = m_look.selectedBackColor;
    } else if (IsHot() && m_look.hotBackColor.isValid()) {
        color = m_look.hotBackColor;
    }
    if (color.isValid()) {
        painter.fillRect(area, color);
    }
    m_skin->DrawImage(painter, area, m_look.backImage);
    m_skin->DrawImage(painter, area, StateImage());
    m_skin->DrawImage(painter, area, m_look.foreImage);
    if (m_look.borderSize > 0 && m_look.borderColor.isValid()) {
        const int size = m_look.borderSize;
        QRegion border(area);
        border -= QRegion(area.adjusted(size, size, -size, -size));
        for (const QRect& edge : border) {
            painter.fillRect(edge, m_look.borderColor);
        }
    }
}

void VisualControl::DrawText(QPainter& painter, const QRect& area)
{
    m_isCut = DrawRuns(painter, *m_skin, m_runs, StyleIn(area)).isCut;
}

void VisualControl::DrawFocus(QPainter& painter, const QRect& area) const
{
    if (Widget()->hasFocus()) {
        DrawFocusMark(painter, area);
    }
}

bool VisualControl::HandleWidgetEvent(QEvent& event)
{
    switch (event.type()) {
    case QEvent::ToolTip:
        // A text that has no room is shown whole.
        if (m_isCut && Widget()->toolTip().isEmpty()) {
            ShowPlainToolTip(static_cast<QHelpEvent&>(event).globalPos(), PlainText(m_runs),
                             *Widget());
            return true;
        }
        return false;
    case QEvent::ContextMenu:
        if (m_hasMenu) {
            const QPoint place = static_cast<QContextMenuEvent&>(event).globalPos();
            SendNotify(NotifyMenu, place.x(), place.y());
        }
        return m_hasMenu;
    case QEvent::EnabledChange:
    case QEvent::HoverEnter:
    case QEvent::HoverLeave:
        Invalidate();
        return false;
    default:
        return false;
    }
}

bool VisualControl::SetPlaceAttribute(VisualControl& control,
                                      const QString& name,
                                      const QString& value)
{
    using Setter = AttributeSetter<ControlPlace>;
    static constexpr std::array<Setter, 9> Table = {{
        {"width",
         [](ControlPlace& place, const QString& text) { place.width = ParseLength(text); }},
        {"height",
         [](ControlPlace& place, const QString& text) { place.height = ParseLength(text); }},
        {"share",
         [](ControlPlace& place, const QString& text) {
             place.share = std::clamp(ParseNumber(text), 1, MostShares);
         }},
        {"minwidth", [](ControlPlace& place,
                        const QString& text) { place.minimum.setWidth(ParseNumber(text)); }},
        {"minheight", [](ControlPlace& place,
                         const QString& text) { place.minimum.setHeight(ParseNumber(text)); }},
        {"maxwidth", [](ControlPlace& place,
                        const QString& text) { place.maximum.setWidth(ParseNumber(text)); }},
        {"maxheight", [](ControlPlace& place,
                         const QString& text) { place.maximum.setHeight(ParseNumber(text)); }},
        {"padding",
         [](ControlPlace& place, const QString& text) { place.padding = ParseMargins(text); }},
        {"pos", [](ControlPlace& place, const QString& text) { place.free = ParseRect(text); }},
    }};
    const bool isKnown = SetFromTable(Table, control.m_place, name, value);
    if (isKnown) {
        control.Widget()->updateGeometry();
    }
    return isKnown;
}

bool VisualControl::SetTextAttribute(VisualControl& control,
                                     const QString& name,
                                     const QString& value)
{
    using Setter = AttributeSetter<VisualControl>;
    static constexpr std::array<Setter, 3> Table = {{
        {"tooltip",
         [](VisualControl& visual, const QString& text) {
             visual.Widget()->setToolTip(text);
             visual.RefreshText();
         }},
        {"accname",
         [](VisualControl& visual, const QString& text) {
             visual.m_accessibleName = text;
             visual.RefreshText();
         }},
        {"menu",
         [](VisualControl& visual, const QString& text) { visual.m_hasMenu = ParseTruth(text); }},
    }};
    return SetFromTable(Table, control, name, value);
}

bool VisualControl::ReadAttribute(const QString& name, const QString& value)
{
    if (SetLookAttribute(m_look, name, value)) {
        OnLookChanged();
        RefreshText();
        return true;
    }
    return SetPlaceAttribute(*this, name, value) || SetTextAttribute(*this, name, value) ||
           CControlUI::ReadAttribute(name, value);
}
