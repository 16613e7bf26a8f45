#include "ui/markup/TextFlow.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

namespace {

constexpr QChar Ellipsis(0x2026);
// More lines than a window can show; what follows is not looked at.
constexpr std::size_t MaxLines = 512;

// A piece of a run that is not broken any more, with its place in the line.
struct Piece
{
    PlacedRun placed;
    int x = 0;
    int width = 0;
    int ascent = 0;
    int descent = 0;
};

struct Line
{
    std::vector<Piece> pieces;
    int width = 0;
    int ascent = 0;
    int descent = 0;
};

class Flow
{
public:
    Flow(const std::vector<TextRun>& runs, const TextMeasure& measure, const TextArea& area)
        : m_runs(runs), m_measure(measure), m_area(area)
    {
    }

    TextLayout Place()
    {
        BreakIntoLines();
        return Align();
    }

private:
    void BreakIntoLines()
    {
        StartLine();
        for (std::size_t i = 0; i < m_runs.size(); ++i) {
            const TextRun& run = m_runs[i];
            if (m_lines.size() > MaxLines) {
                m_isCut = true;
                return;
            }
            switch (run.kind) {
            case RunKind::LineBreak:
                StartLine();
                break;
            case RunKind::Space:
                m_lines.back().width = std::max(m_lines.back().width + run.space, 0);
                break;
            case RunKind::Image:
                PutImage(i);
                break;
            case RunKind::Text:
                PutText(i);
                break;
            }
        }
    }

    void StartLine()
    {
        Line line;
        line.ascent = m_measure.Ascent(-1);
        line.descent = m_measure.Descent(-1);
        m_lines.push_back(std::move(line));
        m_lineIsFull = false;
    }

    int Room() const { return m_area.rect.width() - m_lines.back().width; }

    void PutImage(std::size_t index)
    {
        const QSize size = m_measure.ImageSize(m_runs[index]);
        if (size.isEmpty()) {
            return;
        }
        if (size.width() > Room() && m_area.wraps && !m_lines.back().pieces.empty()) {
            StartLine();
        }
        if (m_lineIsFull || size.width() > Room()) {
            m_isCut = true;
            m_lineIsFull = true;
            return;
        }
        // Half of the picture above the middle of the letters, half below.
        const int middle = (m_measure.Ascent(-1) - m_measure.Descent(-1)) / 2;
        const int ascent = size.height() / 2 + middle;
        Append({{index, {}, {}, 0}, 0, size.width(), ascent, size.height() - ascent});
    }

    void PutText(std::size_t index)
    {
        const int font = m_runs[index].font;
        QString rest = m_runs[index].text;
        while (!rest.isEmpty() && !m_lineIsFull && m_lines.size() <= MaxLines) {
            const int width = m_measure.Width(font, rest);
            if (width <= Room()) {
                AppendText(index, rest, width);
                return;
            }
            const qsizetype fitting = m_area.wraps ? FittingWords(font, rest) : 0;
            if (fitting > 0) {
                AppendText(index, rest.left(fitting), m_measure.Width(font, rest.left(fitting)));
                rest = rest.mid(fitting);
                StartLine();
            } else if (m_area.wraps && !m_lines.back().pieces.empty()) {
                StartLine();
            } else {
                PutCut(index, rest);
                if (m_area.wraps) {
                    const qsizetype place =
                        QTextBoundaryFinder(QTextBoundaryFinder::Line, rest).toNextBoundary();
                    rest = place <= 0 ? QString() : rest.mid(place);
                    StartLine();
                }
            }
        }
        m_isCut = m_isCut || !rest.isEmpty();
    }

    // The length of what still fits up to a place where a line may end: after a blank, and between most letters of languages
    // that write without blanks.
    qsizetype FittingWords(int font, const QString& text) const
    {
        QTextBoundaryFinder places(QTextBoundaryFinder::Line, text);
        qsizetype fitting = 0;
        for (qsizetype place = places.toNextBoundary(); place > 0;
             place = places.toNextBoundary()) {
            if (m_measure.Width(font, WithoutBlanksBehind(text.left(place))) > Room()) {
                break;
            }
            fitting = place;
        }
        return fitting;
    }

    static QString WithoutBlanksBehind(QString text)
    {
        while (text.endsWith(QLatin1Char(' '))) {
            text.chop(1);
        }
        return text;
    }

    // As many letters as fit before an ellipsis; by halving, for a name can have thousands of them.
    void PutCut(std::size_t index, const QString& text)
    {
        const int font = m_runs[index].font;
        qsizetype fits = 0;
        qsizetype tooLong = text.size();
        while (fits + 1 < tooLong) {
            const qsizetype middle = fits + (tooLong - fits) / 2;
            (m_measure.Width(font, text.left(middle) + Ellipsis) <= Room() ? fits : tooLong) =
                middle;
        }
        // Not between the halves of one letter.
        if (fits > 0 && text[fits - 1].isHighSurrogate()) {
            --fits;
        }
        const QString cut = text.left(fits) + Ellipsis;
        AppendText(index, cut, std::min(m_measure.Width(font, cut), std::max(Room(), 0)));
        m_isCut = true;
        m_lineIsFull = true;
    }

    void AppendText(std::size_t index, const QString& text, int width)
    {
        const int font = m_runs[index].font;
        Append({{index, text, {}, 0}, 0, width, m_measure.Ascent(font), m_measure.Descent(font)});
    }

    void Append(Piece piece)
    {
        Line& line = m_lines.back();
        piece.x = line.width;
        line.width += piece.width;
        line.ascent = std::max(line.ascent, piece.ascent);
        line.descent = std::max(line.descent, piece.descent);
        line.pieces.push_back(std::move(piece));
    }

    TextLayout Align()
    {
        TextLayout layout;
        for (const Line& line : m_lines) {
            layout.size.rwidth() = std::max(layout.size.width(), line.width);
            layout.size.rheight() += line.ascent + line.descent;
        }
        layout.size = layout.size.expandedTo(QSize(0, 0));
        const QRect& rect = m_area.rect;
        layout.isCut = m_isCut || layout.size.height() > rect.height();
        int y = rect.top();
        if (m_area.alignment.testFlag(Qt::AlignVCenter)) {
            y += (rect.height() - layout.size.height()) / 2;
        } else if (m_area.alignment.testFlag(Qt::AlignBottom)) {
            y += rect.height() - layout.size.height();
        }
        // The beginning is what is read first, when not all lines have room.
        y = std::max(y, m_lines.size() > 1 ? rect.top() : y);
        for (Line& line : m_lines) {
            PlaceLine(line, y, layout);
            y += line.ascent + line.descent;
        }
        return layout;
    }

    void PlaceLine(Line& line, int y, TextLayout& layout) const
    {
        const int room = std::max(m_area.rect.width() - line.width, 0);
        int start = m_area.rect.left();
        if (m_area.alignment.testFlag(Qt::AlignHCenter)) {
            start += room / 2;
        } else if (m_area.alignment.testFlag(Qt::AlignRight)) {
            start += room;
        }
        for (Piece& piece : line.pieces) {
            piece.placed.baseline = y + line.ascent;
            piece.placed.rect = QRect(start + piece.x, piece.placed.baseline - piece.ascent,
                                      piece.width, piece.ascent + piece.descent);
            layout.placed.push_back(std::move(piece.placed));
        }
    }

    const std::vector<TextRun>& m_runs;
    const TextMeasure& m_measure;
    const TextArea& m_area;
    std::vector<Line> m_lines;
    bool m_lineIsFull = false;
    bool m_isCut = false;
};

}  // namespace

TextLayout
FlowText(const std::vector<TextRun>& runs, const TextMeasure& measure, const TextArea& area)
{
    return Flow(runs, measure, area).Place();
}
