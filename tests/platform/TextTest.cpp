#include "platform/Text.h"

#include "platform/SafeName.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

namespace {

TEST(Text, CodePage437AgreesWithAnIndependentTable)
{
    if (const std::string missing = MissingTool({"python3"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const std::string table = MustRun(
        {"python3", "-c",
         "import sys;sys.stdout.buffer.write(bytes(range(1,256)).decode('cp437').encode())"});
    std::string bytes;
    for (int value = 1; value < 256; ++value) {
        bytes.push_back(static_cast<char>(value));
    }
    EXPECT_EQ(CodePage437ToUtf8(bytes), table);
}

TEST(Text, Utf16BecomesUtf8AndLoneSurrogatesTheReplacementCharacter)
{
    const std::pair<std::u16string, std::string> cases[] = {
        {u"a\u00E9\u20AC", "a\u00E9\u20AC"},
        {u"\U0001F4F7", "\U0001F4F7"},
        {{0xD800}, "\uFFFD"},
        {{0xDC00, 0xD800}, "\uFFFD\uFFFD"},
        {{0xD800, 0xD800, 0xDC00}, "\uFFFD\U00010000"},
        {{u'a', 0, u'b'}, std::string("a\0b", 3)},
        {{0xDBFF, 0xDFFF}, "\U0010FFFF"},
    };
    for (const auto& [units, text] : cases) {
        EXPECT_EQ(Utf16ToUtf8(units), text);
    }
    EXPECT_EQ(UntilZero(std::u16string_view(u"ab\0c", 4)), u"ab");
}

TEST(Text, Utf8BecomesUtf16AndBadBytesTheReplacementCharacter)
{
    const std::pair<std::string, std::u16string> cases[] = {
        {"a\u00E9\u20AC\U0001F4F7", u"a\u00E9\u20AC\U0001F4F7"},
        {"\x80", u"\uFFFD"},
        {"\xC0\xAF", u"\uFFFD\uFFFD"},  // a slash written too long
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},  // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF5", u"\uFFFD"},
        {"\xE2\x82", u"\uFFFD\uFFFD"},  // cut at the end
        {"\xE2zz", u"\uFFFDzz"},
    };
    for (const auto& [text, units] : cases) {
        EXPECT_EQ(Utf8ToUtf16(text), units) << text;
    }
}

TEST(Text, NamesAreCutInTheirStemAtACodePoint)
{
    struct CutCase
    {
        std::string name;
        std::size_t maxBytes;
        std::string expected;
    };
    const CutCase cases[] = {
        {"short.jpg", 9, "short.jpg"},
        {"longer.jpg", 9, "longe.jpg"},
        {"a.b.jpg", 6, "a..jpg"},
        {"\u00E9\u00E9\u00E9.jpg", 9, "\u00E9\u00E9.jpg"},  // one byte is left over
        {"nodotatall", 4, "nodo"},
        {"x.toolong", 4, "x.to"},  // the extension does not fit
        {"\u20AC\u20AC", 5, "\u20AC"},
        {".hidden", 3, ".hi"},
    };
    for (const CutCase& row : cases) {
        EXPECT_EQ(CutName(row.name, row.maxBytes), row.expected) << row.name;
    }
}

TEST(SafeName, NoNameLeavesTheFolder)
{
    const std::pair<std::string, std::string> cases[] = {
        {"plain.jpg", "plain.jpg"},
        {"../../etc/passwd", ".._.._etc_passwd"},
        {"a/b", "a_b"},
        {"", "_"},
        {".", "_"},
        {"..", "__"},
        {"...", "..."},
        {std::string("a\0b\x1F\x7F", 5), "a_b__"},
        {"back\\slash", "back\\slash"},  // no separator here
        {std::string(300, 'x') + ".jpg", std::string(251, 'x') + ".jpg"},
    };
    for (const auto& [name, safe] : cases) {
        EXPECT_EQ(SafeFileName(name), safe);
    }
}

TEST(SafeName, AnExtensionWithoutRoomForAStemIsCutAsText)
{
    std::string letters;
    for (int i = 0; i < 130; ++i) {
        letters += "\u0416";
    }
    EXPECT_EQ(SafeFileName("1." + letters), "1." + letters.substr(0, 252));
    EXPECT_EQ(SafeFileName("ab." + std::string(254, 'x')), "ab." + std::string(252, 'x'));
}

TEST(SafeName, WindowsRulesLeaveNoNameThatItsFileSystemsRefuse)
{
    const std::pair<std::string, std::string> cases[] = {
        {"12:30 \"a\" <b>|c?.jpg", "12_30 _a_ _b__c_.jpg"},
        {"a\\b*c/d", "a_b_c_d"},
        {"end. . ", "end"},
        {"...", "_"},
        {" a.b", " a.b"},
        {"..", "__"},
        {"NUL", "_NUL"},
        {"com1.tar.gz", "_com1.tar.gz"},
        {"LPT9 .txt", "_LPT9 .txt"},
        {"com0", "com0"},
        {"console.txt", "console.txt"},
    };
    for (const auto& [name, safe] : cases) {
        EXPECT_EQ(SafeFileName(name, NameRules::Windows), safe);
    }
    EXPECT_EQ(SafeFolderPath("a:b\\..\\aux\\", NameRules::Windows), "a_b/__/_aux");
}

TEST(SafeName, FolderPathsStayRelativeWhateverTheirComponents)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},           {"DCIM\\100\\", "DCIM/100"}, {"..\\..\\", "__/__"},
        {"\\\\a\\\\", "a"}, {"/etc\\", "_etc"},          {"a/../..\\b", "a_.._../b"},
    };
    for (const auto& [path, safe] : cases) {
        EXPECT_EQ(SafeFolderPath(path).string(), safe) << path;
        EXPECT_TRUE(SafeFolderPath(path).is_relative());
    }
}

TEST(Text, LowerCaseTouchesAsciiLettersAlone)
{
    EXPECT_EQ(LowerAscii("AZ[@`\u00C4_z"), "az[@`\u00C4_z");
    EXPECT_TRUE(EqualIgnoringAsciiCase("JpEg", "jPeG"));
    EXPECT_FALSE(EqualIgnoringAsciiCase("jpg", "jpeg"));
    EXPECT_FALSE(EqualIgnoringAsciiCase("[", "{"));
}

}  // namespace
