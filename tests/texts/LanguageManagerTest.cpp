#include "texts/LanguageManager.h"

#include "tests/texts/WriteText.h"

#include <gtest/gtest.h>

namespace {

class LanguageManagerTest : public testing::Test
{
protected:
    LanguageManagerTest()
    {
        WriteText(m_data / "config.ini", "; kept\n[DefaultLanguage]\nDefault=Second\n"
                                         "[Languages]\nFirst=One = 1\nSecond=Two\n");
        WriteText(m_data / "Languages/First.ini", "[Messages]\nA=first\nOnly=here\n");
        WriteText(m_data / "Languages/Second.ini",
                  "[Messages]\nA=old\nB=x=y\nA=second\n[Other]\nA=other\n");
        WriteText(m_data / "Languages/English.ini", "[Messages]\nA=english\n");
        WriteText(m_folder / "outside.ini", "[Messages]\nA=outside\n");
    }

    LanguagePaths Paths() const { return {m_data, m_own}; }
    std::string TextOf(const char* key) const
    {
        return LanguageManager(Paths()).GetSection("Messages").Get(key);
    }

    TempFolder m_folder;
    std::filesystem::path m_data = m_folder / "data";
    std::filesystem::path m_own = m_folder / "own" / "config.ini";
};

TEST_F(LanguageManagerTest, ReadsTheChosenLanguageAndTheMenu)
{
    LanguageManager manager(Paths());
    EXPECT_EQ(manager.GetCurrentLanguage(), "Second");
    EXPECT_EQ(manager.GetLanguages(),
              (std::vector<LanguageEntry>{{"First", "One = 1"}, {"Second", "Two"}}));
    EXPECT_EQ(manager.GetSection("Messages").Get("A"), "second");
    EXPECT_EQ(manager.GetSection("Messages").Get("B"), "x=y");
    EXPECT_EQ(manager.GetSection("Other").Get("A"), "other");

    // What is asked for and missing is there from then on, with an empty text.
    EXPECT_EQ(manager.GetSection("None").Get("A"), "");
    EXPECT_EQ(manager.GetSection("None").Entries().size(), 1u);
}

TEST_F(LanguageManagerTest, AMissingConfigFileGivesEnglishAndNoMenu)
{
    std::filesystem::remove(m_data / "config.ini");
    LanguageManager manager(Paths());
    EXPECT_EQ(manager.GetCurrentLanguage(), "English");
    EXPECT_TRUE(manager.GetLanguages().empty());
    EXPECT_EQ(manager.GetSection("Messages").Get("A"), "english");

    ASSERT_EQ(manager.SetLanguage("First"), ResultSuccess);
    EXPECT_EQ(ReadText(m_data / "config.ini"), "[DefaultLanguage]\nDefault=First\n");
}

TEST_F(LanguageManagerTest, AMissingLanguageFileGivesEmptyTexts)
{
    std::filesystem::remove(m_data / "Languages/Second.ini");
    EXPECT_EQ(TextOf("A"), "");
}

TEST_F(LanguageManagerTest, SettingALanguageReplacesAllTextsAndIsRemembered)
{
    LanguageManager manager(Paths());
    LanguageSection& messages = manager.GetSection("Messages");
    ASSERT_EQ(manager.SetLanguage("First"), ResultSuccess);
    EXPECT_EQ(manager.GetCurrentLanguage(), "First");
    EXPECT_EQ(messages.Get("A"), "first");  // a reference taken before
    EXPECT_EQ(messages.Get("B"), "");
    EXPECT_TRUE(manager.GetSection("Other").Entries().empty());
    EXPECT_EQ(ReadText(m_data / "config.ini"), "; kept\n[DefaultLanguage]\nDefault=First\n"
                                               "[Languages]\nFirst=One = 1\nSecond=Two\n");
    EXPECT_FALSE(std::filesystem::exists(m_own));
    EXPECT_EQ(TextOf("Only"), "here");
}

TEST_F(LanguageManagerTest, TheUsersFileTakesTheChoiceWhereTheDataFolderCannotAndThenWins)
{
    std::filesystem::create_directory(m_data / "config.ini.tmp");  // in the way of writing
    LanguageManager manager(Paths());
    ASSERT_EQ(manager.SetLanguage("First"), ResultSuccess);
    EXPECT_EQ(ReadText(m_own), "[DefaultLanguage]\nDefault=First\n");
    EXPECT_EQ(LanguageManager(Paths()).GetLanguages().size(), 2u);  // from the data folder

    // Once there, it is written although the data folder could be again.
    std::filesystem::remove(m_data / "config.ini.tmp");
    ASSERT_EQ(manager.SetLanguage("English"), ResultSuccess);
    EXPECT_EQ(TextOf("A"), "english");
    EXPECT_NE(ReadText(m_data / "config.ini").find("Default=Second"), std::string::npos);

    WriteText(m_own, "[Languages]\nMine=My own\n");
    LanguageManager mixed(Paths());
    EXPECT_EQ(mixed.GetCurrentLanguage(), "Second");
    EXPECT_EQ(mixed.GetLanguages(), (std::vector<LanguageEntry>{{"Mine", "My own"}}));
}

TEST_F(LanguageManagerTest, ALanguageThatCannotBeWrittenDownLastsForTheRun)
{
    std::filesystem::create_directory(m_data / "config.ini.tmp");
    WriteText(m_folder / "own", "a file where the folder should be");
    LanguageManager manager(Paths());
    EXPECT_NE(manager.SetLanguage("First"), ResultSuccess);
    EXPECT_EQ(manager.GetSection("Messages").Get("A"), "first");
    EXPECT_EQ(TextOf("A"), "second");
}

TEST_F(LanguageManagerTest, AFileThatIsTooLargeToKeepIsNotReplaced)
{
    WriteText(m_own, "[Languages]\nMine=x\n" + std::string(IniReader::MaxFileBytes, ';'));
    const auto size = std::filesystem::file_size(m_own);
    EXPECT_NE(LanguageManager(Paths()).SetLanguage("First"), ResultSuccess);
    EXPECT_EQ(std::filesystem::file_size(m_own), size);
}

TEST_F(LanguageManagerTest, NoStemLeadsOutOfTheFolder)
{
    const std::string stems[] = {
        "../../outside", "..",   ".",      "",          ".hidden",
        "a/b",           "a\\b", "a\nb=c", "\"First\"", m_folder / "outside"};
    LanguageManager manager(Paths());
    for (const std::string& stem : stems) {
        EXPECT_EQ(manager.SetLanguage(stem), ResultInvalidParameter) << stem;
        EXPECT_EQ(manager.GetSection("Messages").Get("A"), "second") << stem;
    }
    for (const char* stem : {"../../outside", "", "/etc/x"}) {
        WriteText(m_data / "config.ini", std::string("[DefaultLanguage]\nDefault=") + stem + "\n");
        EXPECT_EQ(TextOf("A"), "english") << stem;
    }
    WriteText(m_data / "config.ini", "[DefaultLanguage]\nDefault=\"First\"\n");
    EXPECT_EQ(TextOf("A"), "first");
}

TEST_F(LanguageManagerTest, CutsTheNameOfALanguageAndTheLinesOfItsFile)
{
    const std::string longStem(64, 'n');
    WriteText(m_data / ("Languages/" + longStem + ".ini"),
              "[Messages]\nA=" + std::string(2000, 'v') + "\n");
    WriteText(m_data / "config.ini", "[DefaultLanguage]\nDefault=" + longStem +
                                         "more\n[Languages]\nx=" + std::string(200, 'm') + "\n");
    LanguageManager manager(Paths());
    EXPECT_EQ(manager.GetCurrentLanguage(), longStem);
    EXPECT_EQ(manager.GetSection("Messages").Get("A").size(), 1024u - 2);
    EXPECT_EQ(manager.GetLanguages().at(0).menuText.size(), 128u - 2);
}

TEST(LanguageManager, TheProgramFindsTheFilesBesideItself)
{
    const LanguagePaths paths = LanguagePaths::OfThisProgram();
    EXPECT_TRUE(std::filesystem::exists(paths.dataFolder / "Languages" / "English.ini"));
    EXPECT_EQ(paths.userConfigPath.filename(), "config.ini");
    EXPECT_EQ(paths.userConfigPath.parent_path().filename(), "OrvantaLumivault");
}

}  // namespace
