// Holds each language file against one table of what the windows ask for, and against the English one.
#include "platform/Text.h"
#include "tests/texts/WriteText.h"
#include "texts/LanguageManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <sstream>

namespace {

using Texts = std::map<std::string, std::string>;  // "section/key" to value

constexpr IniLimits Unlimited = {1 << 20, 1 << 20};

struct SectionKeys
{
    const char* section;
    const char* keys;  // "name" or "name:kinds of its placeholders, in order"
};

constexpr SectionKeys Expected[] = {
    {"Messages",
     "MSG0101 MSG0102 MSG0201 MSG0202 MSG0203 MSG0204 MSG0205 MSG0206 MSG0207 MSG0208 MSG0209 "
     "MSG0210 MSG0211 MSG0212 MSG0213 MSG0214 MSG0216 MSG0217 MSG0218 MSG0219 MSG0220 MSG0221 "
     "MSG0301 MSG0302 MSG0303 MSG0304 MSG0305 MSG0306 MSG0401 MSG0402 MSG0403 MSG0404 MSG0405 "
     "MSG0501 MSG0502 MSG0503 MSG0504 MSG0505 MSG0601 MSG0602 MSG0701:c MSG0702:d MSG0703 MSG0704 "
     "MSG0705 MSG0706 MSG0707 MSG0708 MSG0709 MSG0801 MSG0802:s MSG0803 MSG0804:sd MSG0805 MSG0901 "
     "MSG0902 MSG0903 MSG0904 MSG0905 MSG1101 MSG1102:dddd MSG1103 MSG1201:c MSG1202:d MSG1203 "
     "MSG1204 MSG1205 MSG1206 MSG1207"},
    {"MainWnd",
     "BtnRecoverMode BtnCreateImageMode BtnScan BtnAdvanceScan BtnLoadImage BtnRecover BtnPrev "
     "BtnNext BtnCreateImage BtnPhoto BtnAudio BtnVideo TabFileType TabRecover MainTitle "
     "LabelDiskInfo DiskName DiskFileSystem DiskSize FileName Size ModifiedTime CreatedTime Path "
     "Type MSG0807 MSG0808 MSG0809"},
    {"ScanWnd", "title cancelbtn"},
    {"SearchProcessWnd", "title cancelbtn"},
    {"RecoverProcessWnd", "title OpenBtn FinishBtn CancelBtn DetailBtn File Status"},
    {"PreviewProcessWnd", "title cancelbtn"},
    {"CreateImageWnd", "title cancelbtn"},
    {"MessageBox", "okbtn cancelbtn"},
    {"MenuWnd", "item_language item_help item_faq item_support item_about item_exit"},
    {"Desktop",
     "DSK0100 DSK0101 DSK0102 DSK0103 DSK0104 DSK0105:d DSK0106 DSK0107 DSK0108 DSK0109 "
     "DSK0110 DSK0111 DSK0112:d DSK0113 DSK0114:d DSK0115 "
     "DSK0200 DSK0201 DSK0202 DSK0203 DSK0204 DSK0205 DSK0206 DSK0301:s DSK0302:s DSK0303"},
    {"Extras",
     "EXT0101 EXT0102:dd EXT0103:d EXT0104 EXT0105 EXT0106 EXT0107 EXT0108 EXT0109:s EXT0110:s "
     "EXT0111:s EXT0112:s EXT0113:s EXT0114 EXT0115 EXT0116 EXT0117 EXT0118 EXT0119 EXT0120 "
     "EXT0121 "
     "EXT0201:d% EXT0202:d% EXT0203:d EXT0204 EXT0205:ss EXT0206 EXT0207 EXT0208 EXT0209 EXT0211 "
     "EXT0212 EXT0213 EXT0214 EXT0215:ss EXT0216:sd EXT0217 EXT0218:s EXT0219 EXT0220 EXT0221:s "
     "EXT0222:s EXT0223:s EXT0224:s EXT0225 EXT0231 EXT0232 EXT0233 EXT0234 EXT0235 EXT0236 "
     "EXT0237:s EXT0241 EXT0251 EXT0252 EXT0253:s EXT0254:ddds EXT0255 EXT0256:s EXT0257 "
     "EXT0261:s EXT0271 EXT0281 EXT0282 EXT0283 "
     "EXT0301"},
};

// Words that another language shares with English.
const std::set<std::string> SharedWords = {
    "OK",           "Audio",  "Confirmation",    "Details",     "Error",  "File",  "File system",
    "File system:", "Image:", "Folder:",         "Information", "Model:", "Name",  "Photos",
    "Question",     "Status", "user-guide.html", "Support",     "Type",   "Videos"};

// What a message box of its size holds, in half-width letters of about 7 pixels: the small ones two
// lines, the others three or four.
struct BoxText
{
    const char* key;
    std::size_t letters;
};
constexpr BoxText Boxes[] = {
    {"MSG0214", 180}, {"MSG0216", 90},  {"MSG0217", 66},  {"MSG0218", 66},  {"MSG0219", 66},
    {"MSG0220", 66},  {"MSG0221", 66},  {"MSG0306", 115}, {"MSG0504", 66},  {"MSG0505", 90},
    {"MSG0709", 115}, {"MSG0805", 210}, {"MSG0903", 150}, {"MSG1103", 150}, {"MSG1205", 150},
    {"MSG1206", 150}, {"MSG1207", 105},
};
constexpr BoxText DesktopBoxes[] = {
    {"DSK0104", 210}, {"DSK0106", 210}, {"DSK0107", 100}, {"DSK0109", 66},  {"DSK0110", 104},
    {"DSK0111", 104}, {"DSK0112", 104}, {"DSK0113", 104}, {"DSK0114", 104}, {"DSK0115", 150},
    {"DSK0301", 150}, {"DSK0302", 150}, {"DSK0303", 90}};

// Of scans, reports and the rescue.
constexpr BoxText ScanExtraBoxes[] = {
    {"EXT0204", 180}, {"EXT0205", 210}, {"EXT0206", 180}, {"EXT0207", 210}, {"EXT0208", 210},
    {"EXT0219", 150}, {"EXT0220", 150}, {"EXT0221", 150}, {"EXT0222", 150}, {"EXT0223", 150},
    {"EXT0225", 150}, {"EXT0231", 150}, {"EXT0232", 150}, {"EXT0233", 150}, {"EXT0234", 150},
    {"EXT0235", 210}, {"EXT0236", 150}, {"EXT0241", 210}, {"EXT0281", 210}, {"EXT0283", 150}};

std::filesystem::path LanguagesFolder()
{
    return LUMIVAULT_LANGUAGES;
}

std::string PlaceholdersOf(const std::string& text)
{
    std::string kinds;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%') {
            ++i;
            kinds.push_back(i < text.size() ? text[i] : '?');
        }
    }
    return kinds;
}

std::map<std::string, std::string> ExpectedPlaceholders()
{
    std::map<std::string, std::string> expected;
    for (const SectionKeys& section : Expected) {
        std::istringstream keys(section.keys);
        for (std::string key; keys >> key;) {
            const std::size_t colon = key.find(':');
            expected[std::string(section.section) + "/" + key.substr(0, colon)] =
                colon == std::string::npos ? "" : key.substr(colon + 1);
        }
    }
    return expected;
}

IniReader ReaderOf(const std::string& stem)
{
    return IniReader::FromFile(LanguagesFolder() / (stem + ".ini"));
}

// Fails on keys and sections that come twice.
Texts TextsOf(const std::string& stem)
{
    const IniReader reader = ReaderOf(stem);
    Texts texts;
    std::set<std::string> seen;
    for (const std::string& section : reader.SectionNames(Unlimited)) {
        EXPECT_TRUE(seen.insert(section).second) << section;
        for (const std::string& line : reader.Lines(section, Unlimited)) {
            const IniPair pair = SplitIniLine(line);
            const std::string key = section + "/" + std::string(pair.key);
            EXPECT_TRUE(texts.emplace(key, pair.value).second) << key;
        }
    }
    return texts;
}

// In half-width letters, as far as the languages here need it.
std::size_t WidthOf(const std::string& text)
{
    std::size_t width = 0;
    for (const char16_t unit : Utf8ToUtf16(text)) {
        width += unit >= 0x2E80 ? 2 : 1;
    }
    return width;
}

bool EndsInColon(const std::string& text)
{
    return text.ends_with(":") || text.ends_with("\uFF1A");
}

std::vector<std::string> Stems()
{
    std::vector<std::string> stems;
    for (const auto& entry : std::filesystem::directory_iterator(LanguagesFolder())) {
        if (entry.path().extension() == ".ini" && entry.path().filename() != "config.ini") {
            stems.push_back(entry.path().stem().string());
        }
    }
    std::sort(stems.begin(), stems.end());
    return stems;
}

class LanguageFilesTest : public testing::TestWithParam<std::string>
{};

TEST_P(LanguageFilesTest, HasEveryTextWithItsPlaceholdersAndNoOther)
{
    const Texts texts = TextsOf(GetParam());
    const auto expected = ExpectedPlaceholders();
    for (const auto& [key, kinds] : expected) {
        const auto found = texts.find(key);
        ASSERT_NE(found, texts.end()) << key << " is missing";
        EXPECT_FALSE(found->second.empty()) << key;
        EXPECT_EQ(PlaceholdersOf(found->second), kinds) << key;
    }
    for (const auto& [key, value] : texts) {
        EXPECT_TRUE(expected.contains(key)) << key << " is asked for by nobody";
    }
}

TEST_P(LanguageFilesTest, IsUtf8WhollyReadWithinTheLimits)
{
    const std::filesystem::path path = LanguagesFolder() / (GetParam() + ".ini");
    const std::string raw = ReadText(path);
    EXPECT_EQ(Utf16ToUtf8(Utf8ToUtf16(raw)), raw);
    EXPECT_EQ(raw.find("\uFFFD"), std::string::npos);

    const Texts texts = TextsOf(GetParam());
    std::istringstream lines(raw);
    std::size_t read = 0;
    for (std::string line; std::getline(lines, line);) {
        read += line.empty() || line.starts_with(';') || line.starts_with('[') ? 0u : 1u;
    }
    EXPECT_EQ(texts.size(), read) << "a line that is no text";

    // Through the limits come the same texts.
    const TempFolder folder;
    WriteText(folder / ("Languages/" + GetParam() + ".ini"), raw);
    WriteText(folder / "config.ini", "[DefaultLanguage]\nDefault=" + GetParam());
    LanguageManager manager({folder.Path(), {}});
    Texts limited;
    for (const SectionKeys& section : Expected) {
        for (const auto& [key, value] : manager.GetSection(section.section).Entries()) {
            limited[std::string(section.section) + "/" + key] = value;
        }
    }
    EXPECT_EQ(limited, texts);
}

TEST_P(LanguageFilesTest, SaysWhatEnglishSaysInItsOwnWords)
{
    const Texts english = TextsOf("English");
    for (const auto& [key, value] : TextsOf(GetParam())) {
        const std::string& original = english.at(key);
        if (GetParam() != "English" && value == original) {
            EXPECT_TRUE(SharedWords.contains(value)) << key << " is not translated: " << value;
        }
        // A value follows these.
        if (original.ends_with(":") && original.find('%') == std::string::npos) {
            EXPECT_TRUE(EndsInColon(value)) << key << ": " << value;
        }
        const bool asks = original.find('?') != std::string::npos;
        EXPECT_EQ(value.find_first_of('?') != std::string::npos ||
                      value.find("\uFF1F") != std::string::npos || key == "MainWnd/MainTitle",
                  asks)
            << key << ": " << value;
        EXPECT_EQ(original.find("2\u00A0") == std::string::npos,
                  value.find("2\u00A0") == std::string::npos)
            << key;
    }
    // The duration follows at once, so the text must end in what may stand before it.
    const std::string timeLeft = TextsOf(GetParam()).at("Messages/MSG0708");
    EXPECT_TRUE(timeLeft.ends_with(": \u2248") || timeLeft.ends_with("\uFF1A")) << timeLeft;
}

TEST_P(LanguageFilesTest, NamesButtonsAsTheyAreLabelledAndHoldsNoMarkup)
{
    const Texts texts = TextsOf(GetParam());
    const std::pair<const char*, const char*> mentions[] = {
        {"MSG0213", "MainWnd/BtnCreateImage"}, {"MSG0502", "MainWnd/BtnScan"},
        {"MSG0502", "MainWnd/BtnAdvanceScan"}, {"MSG0602", "MainWnd/BtnScan"},
        {"MSG0802", "MainWnd/BtnRecover"},     {"MSG1206", "MessageBox/cancelbtn"},
    };
    for (const auto& [message, button] : mentions) {
        const std::string& text = texts.at(std::string("Messages/") + message);
        EXPECT_NE(text.find(texts.at(button)), std::string::npos) << message << " " << button;
    }
    for (const auto& [key, value] : texts) {
        EXPECT_EQ(value.find_first_of("{}<>"), std::string::npos) << key;
    }
}

TEST_P(LanguageFilesTest, FitsItsMessageBoxes)
{
    const Texts texts = TextsOf(GetParam());
    for (const BoxText& box : Boxes) {
        EXPECT_LE(WidthOf(texts.at(std::string("Messages/") + box.key)), box.letters) << box.key;
    }
    for (const BoxText& box : DesktopBoxes) {
        EXPECT_LE(WidthOf(texts.at(std::string("Desktop/") + box.key)), box.letters) << box.key;
    }
    for (const BoxText& box : ScanExtraBoxes) {
        EXPECT_LE(WidthOf(texts.at(std::string("Extras/") + box.key)), box.letters) << box.key;
    }
}

INSTANTIATE_TEST_SUITE_P(All, LanguageFilesTest, testing::ValuesIn(Stems()), [](const auto& shown) {
    return shown.param;
});

TEST(LanguageMenu, OffersEveryFileOnceByItsOwnName)
{
    const LanguageManager manager({LanguagesFolder(), {}});
    EXPECT_EQ(manager.GetCurrentLanguage(), "English");
    std::vector<std::string> stems;
    std::set<std::string> menuTexts;
    for (const LanguageEntry& entry : manager.GetLanguages()) {
        stems.push_back(entry.stem);
        menuTexts.insert(entry.menuText);
    }
    EXPECT_EQ(menuTexts.size(), stems.size());
    std::sort(stems.begin(), stems.end());
    EXPECT_EQ(stems, Stems());
    EXPECT_EQ(stems.size(), 10u);
}

}  // namespace
