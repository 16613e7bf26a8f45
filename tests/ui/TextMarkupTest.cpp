#include "ui/markup/TextMarkup.h"

#include "ui/markup/TextFlow.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

// "T'Found '", "T'12'f7c#ff316d1e", "Sx18", "Iflags.png 2 1a0", "B"
std::string Describe(const std::vector<TextRun>& runs)
{
    QStringList parts;
    for (const TextRun& run : runs) {
        QString part;
        switch (run.kind) {
        case RunKind::Text:
            part = QStringLiteral("T'%1'").arg(run.text);
            break;
        case RunKind::Space:
            part = QStringLiteral("S%1").arg(run.space);
            break;
        case RunKind::Image:
            part = QStringLiteral("I%1 %2 %3").arg(run.image).arg(run.frames).arg(run.frame);
            break;
        case RunKind::LineBreak:
            part = QStringLiteral("B");
            break;
        }
        part += run.font >= 0 ? QStringLiteral(" f%1").arg(run.font) : QString();
        part +=
            run.color.isValid() ? QLatin1Char(' ') + run.color.name(QColor::HexArgb) : QString();
        part += run.link >= 0 ? QStringLiteral(" a%1").arg(run.link) : QString();
        parts.append(part);
    }
    return parts.join(QLatin1Char('|')).toStdString();
}

struct MarkupCase
{
    const char* name;
    const char* text;
    const char* runs;
    const char* plain;
};

std::ostream& operator<<(std::ostream& out, const MarkupCase& markup)
{
    return out << markup.name;
}

class TextMarkupTest : public testing::TestWithParam<MarkupCase>
{};

constexpr MarkupCase Cases[] = {
    {"Plain", "a < b > c {", "T'a < b > c {'", "a < b > c {"},
    {"Nested", "Found {f 7}{c #316D1E}12{/c}{/f} files", "T'Found '|T'12' f7 #ff316d1e|T' files'",
     "Found 12 files"},
    {"OtherSpelling", "<c #80FF0000>red</c><x 18><i a.png 2 1>", "T'red' #80ff0000|S18|Ia.png 2 1",
     "red"},
    {"SpellingsMix", "{c #FF000000}x</c>y", "T'x' #ff000000|T'y'", "xy"},
    {"Spans", "<a>one</a> and <a>two</a>", "T'one' a0|T' and '|T'two' a1", "one and two"},
    {"UnknownDrawsNothing", "{f 5}{x 5}{i d.png 1 0}{x 2}Disk 1{/5}",
     "S5 f5|Id.png 1 0 f5|S2 f5|T'Disk 1' f5", "Disk 1"},
    {"OpenEndsWithTheText", "{f 3}{c #FF112233}x", "T'x' f3 #ff112233", "x"},
    {"ClosedWithoutOpening", "{/f}</c>x</a>", "T'x'", "x"},
    {"NotClosedBracket", "{f 5 <x", "T'{f 5 <x'", "{f 5 <x"},
    {"FramesInBounds", "{i a.png 0 7}{i b.png 2 9}{i}", "Ia.png 1 0|Ib.png 2 1", ""},
    {"HugeNumbers", "{x 99999999999}{f -4}y{x zz}", "S100000|T'y'|S0", "y"},
    {"LineEnds", "a\r\nb\nc", "T'a'|B|T'b'|B|T'c'", "a b c"},
    {"AWrongColourIsTheOwn", "{c red}x{/c}", "T'x'", "x"},
};
INSTANTIATE_TEST_SUITE_P(Texts,
                         TextMarkupTest,
                         testing::ValuesIn(Cases),
                         testing::PrintToStringParamName());

// Ten pixels a letter, lines of twelve; pictures of thirty by twenty.
class FakeMeasure : public TextMeasure
{
public:
    int Width(int, const QString& text) const override
    {
        return static_cast<int>(text.size()) * 10;
    }
    int Ascent(int) const override { return 9; }
    int Descent(int) const override { return 3; }
    QSize ImageSize(const TextRun& run) const override
    {
        return run.image == QLatin1String("none.png") ? QSize() : QSize(30, 20);
    }
};

std::string Place(const QString& text, const TextArea& area)
{
    const std::vector<TextRun> runs = ParseTextMarkup(text, true);
    const TextLayout layout = FlowText(runs, FakeMeasure(), area);
    QStringList parts;
    for (const PlacedRun& placed : layout.placed) {
        parts.append(
            QStringLiteral("%1@%2,%3").arg(placed.text).arg(placed.rect.x()).arg(placed.rect.y()));
    }
    return (parts.join(QLatin1Char('|')) + (layout.isCut ? QStringLiteral(" cut") : QString()))
        .toStdString();
}

}  // namespace

TEST_P(TextMarkupTest, BecomesRunsAndPlainText)
{
    const QString text = QString::fromUtf8(GetParam().text);
    EXPECT_EQ(Describe(ParseTextMarkup(text, true)), GetParam().runs);
    EXPECT_EQ(PlainText(text, true).toStdString(), GetParam().plain);
}

TEST(TextMarkup, ValuesFromDisksAreNeverMarkup)
{
    const QStringList hostile = {
        "{i x.png 1 0}",       "<a>", "{/f}", "{f 9}", "a\nb", QString(QChar(0xFDD1)) + "<a>x</a>",
        QString(QChar(0xFDD0))};
    for (const QString& value : hostile) {
        const auto runs = ParseTextMarkup(
            QStringLiteral("{f 5}{x 2}") + PlainRun(value) + QStringLiteral("{/f}"), true);
        QString kept = value;
        kept.remove(QChar(0xFDD0)).remove(QChar(0xFDD1)).replace('\n', QChar(0xFFFD));
        const bool isEmpty = kept.isEmpty();
        ASSERT_EQ(runs.size(), isEmpty ? 1U : 2U) << value.toStdString();
        EXPECT_EQ(runs.back().font, 5);
        EXPECT_TRUE(isEmpty || runs.back().text == kept) << value.toStdString();
    }
    // Not by standing inside a tag either.
    EXPECT_EQ(PlainText(QStringLiteral("{i ") + PlainRun("b 1 0}<a>c</a>"), true),
              "{i b 1 0}<a>c</a>");
}

TEST(TextFlow, PlacesCutsAndBreaks)
{
    const TextArea line = {QRect(0, 0, 100, 30), Qt::AlignLeft | Qt::AlignTop, false};
    EXPECT_EQ(Place("ab{x 5}cd", line), "ab@0,0|cd@25,0");
    EXPECT_EQ(Place("{i a.png 1 0}ab", line), "@0,0|ab@30,4");
    EXPECT_EQ(Place("abcdefghijkl", line), "abcdefghi\u2026@0,0 cut");
    EXPECT_EQ(Place("{i none.png 1 0}ab", line), "ab@0,0");
    const TextArea right = {QRect(10, 0, 100, 12), Qt::AlignRight | Qt::AlignTop, false};
    EXPECT_EQ(Place("abc", right), "abc@80,0");
    const TextArea middle = {QRect(0, 0, 100, 32), Qt::AlignHCenter | Qt::AlignVCenter, false};
    EXPECT_EQ(Place("abcd", middle), "abcd@30,10");
    const TextArea wrapping = {QRect(0, 0, 100, 48), Qt::AlignLeft | Qt::AlignTop, true};
    EXPECT_EQ(Place("one two three four", wrapping), "one two @0,0|three four@0,12");
    EXPECT_EQ(Place("a\nb", wrapping), "a@0,0|b@0,12");
    EXPECT_EQ(Place("averylongword x", wrapping), "averylong\u2026@0,0|x@0,12 cut");
    // Without blanks a line ends between letters, but not before what closes a sentence.
    EXPECT_EQ(Place(QString::fromUtf8("写真を探して、別のドライブに"), wrapping),
              "写真を探して、別のド@0,0|ライブに@0,12");
    EXPECT_EQ(Place(QString::fromUtf8("写真を探して別のドラ。ライ"), wrapping),
              "写真を探して別のド@0,0|ラ。ライ@0,12");
    EXPECT_EQ(Place("a\nb\nc\nd\ne", wrapping), "a@0,0|b@0,12|c@0,24|d@0,36|e@0,48 cut");
}

TEST(TextFlow, EndsForEveryWidth)
{
    for (int width = -5; width < 80; ++width) {
        for (const bool wraps : {false, true}) {
            const TextArea area = {QRect(0, 0, width, 20), Qt::AlignHCenter, wraps};
            EXPECT_FALSE(Place("one {x 20}two{x -60} {i a.png 1 0} three", area).empty());
        }
    }
}
