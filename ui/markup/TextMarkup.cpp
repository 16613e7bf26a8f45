#include "ui/markup/TextMarkup.h"

#include "ui/markup/Values.h"

#include <QStringList>

#include <algorithm>

namespace {

// Two of the code points that are set aside for use inside a program.
constexpr QChar PlainStart(0xFDD0);
constexpr QChar PlainEnd(0xFDD1);
constexpr int MaxFrames = 64;
constexpr std::size_t MaxOpen = 64;

class MarkupParser
{
public:
    explicit MarkupParser(QStringView text) : m_text(text) {}

    std::vector<TextRun> Parse(bool hasMarkup)
    {
        while (m_at < m_text.size()) {
            const QChar letter = m_text[m_at];
            if (letter == PlainStart) {
                TakePlain();
            } else if (letter == QLatin1Char('\n') || letter == QLatin1Char('\r')) {
                TakeLineBreak();
            } else if (!hasMarkup || !TakeTag()) {
                m_pending.append(letter);
                ++m_at;
            }
        }
        EndText();
        return std::move(m_runs);
    }

private:
    void TakePlain()
    {
        const qsizetype end = m_text.indexOf(PlainEnd, m_at);
        const qsizetype stop = end < 0 ? m_text.size() : end;
        for (qsizetype i = m_at + 1; i < stop; ++i) {
            // A name from a disk can hold line ends, and stays on its line all the same.
            const QChar letter = m_text[i];
            m_pending.append(letter.category() == QChar::Other_Control ? QChar(0xFFFD) : letter);
        }
        m_at = stop + 1;
    }

    void TakeLineBreak()
    {
        const bool isPair = m_text[m_at] == QLatin1Char('\r') && m_at + 1 < m_text.size() &&
                            m_text[m_at + 1] == QLatin1Char('\n');
        EndText();
        Append({.kind = RunKind::LineBreak});
        m_at += isPair ? 2 : 1;
    }

    // A tag begins with a bracket and a letter or "/": a bracket alone is a letter like others.
    bool TakeTag()
    {
        const bool isBrace = m_text[m_at] == QLatin1Char('{');
        if ((!isBrace && m_text[m_at] != QLatin1Char('<')) || m_at + 1 >= m_text.size()) {
            return false;
        }
        const QChar first = m_text[m_at + 1];
        const qsizetype end = m_text.indexOf(QLatin1Char(isBrace ? '}' : '>'), m_at);
        if (end < 0 || (!first.isLetter() && first != QLatin1Char('/'))) {
            return false;
        }
        const QStringList words = m_text.mid(m_at + 1, end - m_at - 1)
                                      .toString()
                                      .split(QLatin1Char(' '), Qt::SkipEmptyParts);
        // A value put into a tag would be read as a part of it.
        if (m_text.mid(m_at, end - m_at).contains(PlainStart) || words.isEmpty()) {
            return false;
        }
        EndText();
        ReadTag(words);
        m_at = end + 1;
        return true;
    }

    void ReadTag(const QStringList& words)
    {
        const QString& name = words[0];
        const auto numberAt = [&words](qsizetype i) {
            return i < words.size() ? ParseNumber(words[i]) : 0;
        };
        if (name == QLatin1String("f")) {
            Open(m_fonts, numberAt(1));
        } else if (name == QLatin1String("/f")) {
            Close(m_fonts);
        } else if (name == QLatin1String("c")) {
            Open(m_colors, words.size() > 1 ? ParseColor(words[1]) : QColor());
        } else if (name == QLatin1String("/c")) {
            Close(m_colors);
        } else if (name == QLatin1String("a")) {
            Open(m_links, m_linkCount++);
        } else if (name == QLatin1String("/a")) {
            Close(m_links);
        } else if (name == QLatin1String("x")) {
            Append({.kind = RunKind::Space, .space = numberAt(1)});
        } else if (name == QLatin1String("i") && words.size() > 1) {
            const int frames = std::clamp(numberAt(2), 1, MaxFrames);
            Append({.kind = RunKind::Image,
                    .image = words[1],
                    .frames = frames,
                    .frame = std::clamp(numberAt(3), 0, frames - 1)});
        }
    }

    template <typename Value>
    static void Open(std::vector<Value>& open, Value value)
    {
        if (open.size() < MaxOpen) {
            open.push_back(value);
        }
    }

    template <typename Value>
    static void Close(std::vector<Value>& open)
    {
        if (!open.empty()) {
            open.pop_back();
        }
    }

    void EndText()
    {
        if (!m_pending.isEmpty()) {
            Append({.kind = RunKind::Text, .text = m_pending});
            m_pending.clear();
        }
    }

    void Append(TextRun run)
    {
        run.font = m_fonts.empty() ? -1 : m_fonts.back();
        run.color = m_colors.empty() ? QColor() : m_colors.back();
        run.link = m_links.empty() ? -1 : m_links.back();
        m_runs.push_back(std::move(run));
    }

    QStringView m_text;
    qsizetype m_at = 0;
    QString m_pending;
    std::vector<int> m_fonts;
    std::vector<QColor> m_colors;
    std::vector<int> m_links;
    int m_linkCount = 0;
    std::vector<TextRun> m_runs;
};

}  // namespace

std::vector<TextRun> ParseTextMarkup(const QString& text, bool hasMarkup)
{
    return MarkupParser(QStringView(text).left(MaxMarkupText)).Parse(hasMarkup);
}

QString PlainRun(const QString& value)
{
    QString plain = value;
    plain.remove(PlainStart).remove(PlainEnd);
    return PlainStart + plain + PlainEnd;
}

QString PlainText(const std::vector<TextRun>& runs)
{
    QString text;
    bool isApart = false;
    for (const TextRun& run : runs) {
        if (run.kind != RunKind::Text) {
            isApart = true;
            continue;
        }
        QString part = run.text;
        if (isApart && !text.isEmpty()) {
            // One blank for what stands between, however many are around it.
            const bool hasBlank = text.back().isSpace();
            while (hasBlank && part.startsWith(QLatin1Char(' '))) {
                part.remove(0, 1);
            }
            text += hasBlank || part.startsWith(QLatin1Char(' ')) ? QString() : QStringLiteral(" ");
        }
        text += part;
        isApart = false;
    }
    return text;
}

QString PlainText(const QString& text, bool hasMarkup)
{
    return PlainText(ParseTextMarkup(text, hasMarkup));
}
