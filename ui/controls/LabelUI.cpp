#include "ui/controls/LabelUI.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

void CPlainControlUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    DrawText(painter, rect());
}

CLabelUI::CLabelUI(std::shared_ptr<Skin> skin) : WidgetControl<QLabel>(std::move(skin))
{
    setTextFormat(Qt::PlainText);
}

void CLabelUI::OnTextChanged()
{
    m_spanCount = 0;
    for (const TextRun& run : Runs()) {
        m_spanCount = std::max(m_spanCount, run.link + 1);
    }
    m_markedSpan = 0;
    setFocusPolicy(m_spanCount > 0 ? Qt::TabFocus : Qt::NoFocus);
    setMouseTracking(m_spanCount > 0);
    unsetCursor();
}

void CLabelUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    DrawText(painter, rect());
    if (!hasFocus()) {
        return;
    }
    const TextLayout layout = MeasureRuns(*GetSkin(), Runs(), StyleIn(rect()));
    for (const PlacedRun& placed : layout.placed) {
        if (Runs()[placed.run].link == m_markedSpan) {
            DrawFocusMark(painter, placed.rect);
        }
    }
}

int CLabelUI::SpanAt(const QPoint& place) const
{
    if (m_spanCount == 0) {
        return -1;
    }
    return LinkAt(Runs(), MeasureRuns(*GetSkin(), Runs(), StyleIn(rect())), place);
}

void CLabelUI::mousePressEvent(QMouseEvent* event)
{
    m_pressedSpan = SpanAt(event->pos());
    // What is no span is left to the window, which can be moved by it.
    event->setAccepted(m_pressedSpan >= 0);
}

void CLabelUI::mouseReleaseEvent(QMouseEvent* event)
{
    const int pressed = std::exchange(m_pressedSpan, -1);
    event->setAccepted(pressed >= 0);
    if (pressed >= 0 && SpanAt(event->pos()) == pressed) {
        SendNotify(NotifyClick, pressed);
    }
}

void CLabelUI::mouseMoveEvent(QMouseEvent* event)
{
    setCursor(SpanAt(event->pos()) >= 0 ? Qt::PointingHandCursor : Qt::ArrowCursor);
    event->ignore();
}

void CLabelUI::keyPressEvent(QKeyEvent* event)
{
    const bool isForward = event->key() == Qt::Key_Right || event->key() == Qt::Key_Down;
    const bool isBack = event->key() == Qt::Key_Left || event->key() == Qt::Key_Up;
    if (m_spanCount > 0 && (isForward || isBack)) {
        m_markedSpan = std::clamp(m_markedSpan + (isForward ? 1 : -1), 0, m_spanCount - 1);
        update();
    } else if (m_spanCount > 0 &&
               (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter ||
                event->key() == Qt::Key_Space)) {
        SendNotify(NotifyClick, m_markedSpan);
    } else {
        event->ignore();
    }
}

CProgressUI::CProgressUI(std::shared_ptr<Skin> skin) : WidgetControl<QProgressBar>(std::move(skin))
{
    m_look.alignment = Qt::AlignCenter;
    setRange(0, 100);
    setValue(0);
}

void CProgressUI::SetValue(int value)
{
    setValue(std::clamp(value, minimum(), maximum()));
}

bool CProgressUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CProgressUI>, 4> Table = {{
        {"min", [](CProgressUI& bar, const QString& text) { bar.setMinimum(ParseNumber(text)); }},
        {"max", [](CProgressUI& bar, const QString& text) { bar.setMaximum(ParseNumber(text)); }},
        {"value", [](CProgressUI& bar, const QString& text) { bar.SetValue(ParseNumber(text)); }},
        {"forecolor",
         [](CProgressUI& bar, const QString& text) { bar.m_barColor = ParseColor(text); }},
    }};
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

void CProgressUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    // The fore picture is the bar here, and must not lie on the whole ground.
    const QString bar = std::exchange(m_look.foreImage, {});
    DrawGround(painter, rect());
    m_look.foreImage = bar;
    const int range = maximum() - minimum();
    const int done =
        range > 0 ? static_cast<int>(std::int64_t{width()} * (value() - minimum()) / range) : 0;
    const QRect filled(0, 0, done, height());
    if (done > 0 && m_barColor.isValid()) {
        painter.fillRect(filled, m_barColor);
    }
    GetSkin()->DrawImage(painter, filled, bar);
    DrawText(painter, rect());
}
