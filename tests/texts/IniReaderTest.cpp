#include "texts/IniReader.h"

#include "tests/texts/WriteText.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

constexpr IniLimits Ample = {1 << 20, 1 << 20};

struct LinesCase
{
    const char* name;
    std::string text;
    std::vector<std::string> lines;  // of section "a"
};

void PrintTo(const LinesCase& value, std::ostream* out)
{
    *out << value.name;
}

class IniLinesTest : public testing::TestWithParam<LinesCase>
{};

TEST_P(IniLinesTest, GivesTheLinesOfASection)
{
    EXPECT_EQ(IniReader(GetParam().text).Lines("a", Ample), GetParam().lines);
}

const LinesCase LineCases[] = {
    {"Plain", "[a]\nk=v\n[b]\nk=w\n", {"k=v"}},
    {"MarkAndCarriageReturns", "\xEF\xBB\xBF[a]\r\nk=v\r\nl=w", {"k=v", "l=w"}},
    {"OldLineEnds", "[a]\rk=v\r", {"k=v"}},
    {"BlanksAroundBothParts", " [ a ] \n\t k \t=  v w \t\n", {"k=v w"}},
    {"NoBreakSpaceStays", "[a]\nk=v\u00A0\n", {"k=v\u00A0"}},
    {"QuotesStay", "[a]\nk=\" v \"\n", {"k=\" v \""}},
    {"SplitAtTheFirstEquals", "[a]\nk==v=\n", {"k==v="}},
    {"EmptyValue", "[a]\nk=\n", {"k="}},
    {"NotLines", "[a]\n\n;k=v\n  ;k=v\nword\n=v\n \t\n", {}},
    {"CommentInsideAValueIsText", "[a]\nk=v;w\n", {"k=v;w"}},
    {"BeforeTheFirstSection", "k=v\n[a]\n", {}},
    {"CaseOfTheName", "[A]\nk=v\n", {"k=v"}},
    {"SectionsOfOneName", "[a]\nk=v\n[b]\nx=y\n[A]\nk=w\n", {"k=v", "k=w"}},
    {"HeadWithoutItsEnd", "[b]\nx=y\n[a\nk=v\n", {"k=v"}},
    {"TextBehindTheHead", "[a] k=w\nk=v\n", {"k=v"}},
    {"NulBecomesVisible", std::string("[a]\nk=v\0w\n", 10), {"k=v\uFFFDw"}},
    {"BytesThatAreNoUtf8",
     "[a]\nk=\xC3\x28\xFF\xED\xA0\x80\n",
     {"k=\uFFFD(\uFFFD\uFFFD\uFFFD\uFFFD"}},
    {"Nothing", "", {}},
};
INSTANTIATE_TEST_SUITE_P(Texts, IniLinesTest, testing::ValuesIn(LineCases), [](const auto& shown) {
    return shown.param.name;
});

TEST(IniReader, CutsAtItsLimitsInUtf16UnitsAndNeverInsideACodePoint)
{
    const IniReader reader("[a]\nk=\u00E9\U0001F4F7x\nl=w\n[b]\n[cde]\n");
    const std::string camera = "k=\u00E9\U0001F4F7";
    const std::pair<IniLimits, std::vector<std::string>> cases[] = {
        {{100, 5}, {camera, "l=w"}},        // "x" is the sixth unit
        {{100, 4}, {"k=\u00E9", "l=w"}},    // no half of a surrogate pair
        {{10, 100}, {camera + "x", "l="}},  // 6 + 1, then two units and an end
        {{8, 100}, {camera + "x"}},         // an end alone is no entry
        {{5, 100}, {"k=\u00E9"}},          {{1, 100}, {}}, {{0, 0}, {}},
    };
    for (const auto& [limits, lines] : cases) {
        EXPECT_EQ(reader.Lines("a", limits), lines) << limits.all << " " << limits.each;
    }
    EXPECT_EQ(reader.SectionNames({7, 2}), (std::vector<std::string>{"a", "b", "cd"}));
    EXPECT_EQ(reader.SectionNames({6, 256}), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(IniReader, AValueIsTheFirstOneWithoutItsQuotes)
{
    const IniReader reader("[S]\nKey=\"one\"\nkey=two\nodd=\"three\none=\"\nno=\n");
    EXPECT_EQ(reader.Value("s", "KEY"), "one");
    EXPECT_EQ(reader.Value("s", "odd"), "\"three");
    EXPECT_EQ(reader.Value("s", "one"), "\"");
    EXPECT_EQ(reader.Value("s", "no"), "");
    EXPECT_EQ(reader.Value("s", "other"), std::nullopt);
    EXPECT_EQ(reader.Value("t", "key"), std::nullopt);
}

TEST(IniReader, SettingAValueKeepsTheRestOfTheFile)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", "[S]\nk=v\n"},
        {"; note\n[s]\n K = old ; x\nk=2\n[T]\nk=1", "; note\n[s]\nk=v\nk=2\n[T]\nk=1"},
        {"[T]\r\nk=1", "[T]\r\nk=1\r\n[S]\r\nk=v\r\n"},
        {"[S]\r\nx=1\r\n[T]\r\n", "[S]\r\nk=v\r\nx=1\r\n[T]\r\n"},
        {"[S]", "[S]\nk=v"},
        {"[S]\nx=1\n[T]\n[S]\nk=1\n", "[S]\nx=1\n[T]\n[S]\nk=v\n"},
        {"\xEF\xBB\xBF[S]\nk=\xFF\n\xFF", "\xEF\xBB\xBF[S]\nk=v\n\xFF"},
    };
    for (const auto& [before, after] : cases) {
        EXPECT_EQ(WithIniValue(before, "S", "k", "v"), after);
        EXPECT_EQ(IniReader(after).Value("S", "k"), "v") << after;
    }
}

TEST(IniReader, ReadsRegularFilesUpToABound)
{
    const TempFolder folder;
    const std::filesystem::path path = folder / "big.ini";
    WriteText(path, "[a]\nk=v\n" + std::string(IniReader::MaxFileBytes, 'x') + "\n[b]\nk=v\n");
    EXPECT_EQ(IniReader::FromFile(path).SectionNames(Ample), std::vector<std::string>{"a"});
    EXPECT_FALSE(ReadIniText(path));  // it could not be written back whole

    EXPECT_TRUE(IniReader::FromFile(folder / "none.ini").SectionNames(Ample).empty());
    EXPECT_TRUE(IniReader::FromFile(folder.Path()).SectionNames(Ample).empty());
    ASSERT_EQ(::mkfifo((folder / "pipe.ini").c_str(), 0600), 0);
    EXPECT_TRUE(IniReader::FromFile(folder / "pipe.ini").SectionNames(Ample).empty());
}

}  // namespace
