// Every text that the windows show: reads the language files and the file that says which one is chosen.
//
// The program's data folder holds "config.ini" and "Languages/<stem>.ini". The user's own "config.ini"
// in the configuration folder is written where the data folder cannot be, and wins wherever it stands.
#pragma once

#include "platform/ResultCode.h"
#include "texts/IniReader.h"
#include "texts/LanguageSection.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

struct LanguagePaths
{
    std::filesystem::path dataFolder;      // with "config.ini" and "Languages"
    std::filesystem::path userConfigPath;  // the user's own "config.ini"; empty for none

    // Beside the program when its "Languages" are there, as in a build tree, else where they are installed.
    static LanguagePaths OfThisProgram();
};

struct LanguageEntry
{
    std::string stem;      // of the language file's name
    std::string menuText;  // the language's own name

    bool operator==(const LanguageEntry&) const = default;
};

// GetSection() and the sections may be used from any thread, all else from the user interface's.
class LanguageManager
{
public:
    // The one of the process, made and loaded on first use.
    static LanguageManager& GetInstance();

    // Reads the choice and the language file. Files that are missing give empty texts.
    explicit LanguageManager(LanguagePaths paths);
    LanguageManager(const LanguageManager&) = delete;
    LanguageManager& operator=(const LanguageManager&) = delete;
    ~LanguageManager() = default;

    // A section that is missing is made, empty. The reference stays good for the manager's life; after
    // SetLanguage it gives the new texts.
    LanguageSection& GetSection(std::string_view name);
    // For the menu, in the order of the file.
    const std::vector<LanguageEntry>& GetLanguages() const { return m_languages; }
    const std::string& GetCurrentLanguage() const { return m_currentLanguage; }
    // Takes the language and writes the choice down. ResultInvalidParameter, and nothing done, when the
    // stem could lead out of the folder; another failure means that the choice lasts for this run only.
    [[nodiscard]] ResultCode SetLanguage(std::string_view stem);

private:
    void ReadConfig();
    void LoadLanguageFile();
    ResultCode WriteChoice() const;

    LanguagePaths m_paths;
    std::string m_currentLanguage;
    std::vector<LanguageEntry> m_languages;
    std::mutex m_lock;  // guards the map; each section guards its own texts
    std::map<std::string, LanguageSection, std::less<>> m_sections;
};
