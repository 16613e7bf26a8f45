#include "ui/controls/StripUI.h"

#include "ui/markup/Values.h"

#include <QPainter>

#include <array>

namespace {

constexpr int ReadParts = 9;  // of which 1 to 8 are in part, and 9 is a cell that was read

QColor Mixed(const QColor& ground, const QColor& color, int parts)
{
    const auto mix = [parts](int from, int to) { return from + (to - from) * parts / ReadParts; };
    return {mix(ground.red(), color.red()), mix(ground.green(), color.green()),
            mix(ground.blue(), color.blue())};
}

}  // namespace

void CStripUI::SetText(const QString& text)
{
    if (text != m_cells) {
        m_cells = text;
        update();
    }
}

bool CStripUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CStripUI>, 5> Table = {{
        {"readcolor",
         [](CStripUI& strip, const QString& text) { strip.m_readColor = ParseColor(text); }},
        {"foundcolor",
         [](CStripUI& strip, const QString& text) { strip.m_foundColor = ParseColor(text); }},
        {"triedcolor",
         [](CStripUI& strip, const QString& text) { strip.m_triedColor = ParseColor(text); }},
        {"badcolor",
         [](CStripUI& strip, const QString& text) { strip.m_badColor = ParseColor(text); }},
        {"accname", [](CStripUI& strip, const QString& text) { strip.setAccessibleName(text); }},
    }};
    return SetFromTable(Table, *this, name, value) || VisualControl::ReadAttribute(name, value);
}

void CStripUI::DrawCell(QPainter& painter, const QRect& area, QChar letter) const
{
    const QRect below = area.adjusted(0, area.height() / 2, 0, 0);
    switch (letter.unicode()) {
    case u'+':
    case u'F':
        painter.fillRect(area, m_readColor);
        break;
    case u'*':
    case u'/':
        painter.fillRect(area, m_triedColor);
        break;
    case u'-':
    case u'!':
        painter.fillRect(area, m_badColor);
        break;
    default:
        if (letter >= u'1' && letter <= u'8') {
            painter.fillRect(area, Mixed(m_look.backColor, m_readColor, letter.unicode() - u'0'));
        }
    }
    if (letter == u'F' || letter == u'!') {
        painter.fillRect(below, m_foundColor);
    }
}

void CStripUI::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    DrawGround(painter, rect());
    const int border = m_look.borderSize;
    const QRect inside = rect().adjusted(border, border, -border, -border);
    const qsizetype count = m_cells.size();
    for (qsizetype i = 0; i < count; ++i) {
        const int left = inside.left() + static_cast<int>(inside.width() * i / count);
        const int right = inside.left() + static_cast<int>(inside.width() * (i + 1) / count);
        DrawCell(painter, {left, inside.top(), right - left, inside.height()}, m_cells[i]);
    }
}
