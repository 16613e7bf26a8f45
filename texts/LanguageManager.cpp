#include "texts/LanguageManager.h"

#include "platform/FileHandle.h"
#include "platform/Folders.h"

#include <algorithm>

namespace {

constexpr std::string_view DefaultLanguage = "English";
constexpr std::string_view ChoiceSection = "DefaultLanguage";
constexpr std::string_view ChoiceKey = "Default";
constexpr std::string_view MenuSection = "Languages";

constexpr std::size_t MaxLanguageNameUnits = 64;
constexpr IniLimits MenuLimits = {10240, 128};
constexpr IniLimits SectionNameLimits = {1024, 256};
constexpr IniLimits LineLimits = {10240, 1024};

// The choice is no secret, and the data folder's file is read by all users.
constexpr auto ConfigMode =
    std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
    std::filesystem::perms::group_read | std::filesystem::perms::others_read;

// A plain file name: whatever a file or a caller says, nothing outside the folder is opened.
bool IsSafeStem(std::string_view stem)
{
    const auto isUnsafe = [](char letter) {
        return static_cast<unsigned char>(letter) < 0x20 || letter == '/' || letter == '\\' ||
               letter == '"';
    };
    return !stem.empty() && !stem.starts_with('.') &&
           std::none_of(stem.begin(), stem.end(), isUnsafe);
}

std::filesystem::path ConfigIn(const std::filesystem::path& folder)
{
    return folder / "config.ini";
}

// Replaces the file in one step, so that a full disk or a kill leaves the old one.
ResultCode ReplaceFile(const std::filesystem::path& path, const std::string& text)
{
    const std::filesystem::path temporary = path.string() + ".tmp";
    ResultCode result = WriteWholeFile(temporary, text.data(), text.size());
    if (result == ResultSuccess) {
        std::error_code ignored;
        std::filesystem::permissions(temporary, ConfigMode, ignored);
        result = RenameFile(temporary, path);
    }
    if (result != ResultSuccess) {
        (void)RemoveFile(temporary);  // a leftover does no harm: it is written over the next time
    }
    return result;
}

ResultCode WriteChoiceTo(const std::filesystem::path& path, std::string_view stem)
{
    std::string text;
    if (PathExists(path)) {
        const auto old = ReadIniText(path);
        if (!old) {
            return ResultAccessDenied;  // what cannot be read whole must not be replaced
        }
        text = *old;
    }
    return ReplaceFile(path, WithIniValue(text, ChoiceSection, ChoiceKey, stem));
}

}  // namespace

LanguagePaths LanguagePaths::OfThisProgram()
{
    const std::filesystem::path program = ProgramFolder();
    const bool besideProgram = IsFolder(program / "Languages");
    return {besideProgram ? program : program.parent_path() / "share" / "OrvantaLumivault",
            ConfigIn(ConfigurationFolder() / "OrvantaLumivault")};
}

LanguageManager& LanguageManager::GetInstance()
{
    static LanguageManager instance(LanguagePaths::OfThisProgram());
    return instance;
}

LanguageManager::LanguageManager(LanguagePaths paths) : m_paths(std::move(paths))
{
    ReadConfig();
    LoadLanguageFile();
}

LanguageSection& LanguageManager::GetSection(std::string_view name)
{
    const std::scoped_lock guard(m_lock);
    const auto found = m_sections.find(name);
    return found != m_sections.end() ? found->second
                                     : m_sections.try_emplace(std::string(name)).first->second;
}

ResultCode LanguageManager::SetLanguage(std::string_view stem)
{
    if (!IsSafeStem(stem)) {
        return ResultInvalidParameter;
    }
    m_currentLanguage = CutToUnits(stem, MaxLanguageNameUnits);
    const ResultCode result = WriteChoice();
    LoadLanguageFile();
    return result;
}

// The user's file wins value by value: it usually holds the choice alone, and a later version of the
// program brings its own list of languages.
void LanguageManager::ReadConfig()
{
    const IniReader shared = IniReader::FromFile(ConfigIn(m_paths.dataFolder));
    const IniReader own = IniReader::FromFile(m_paths.userConfigPath);

    m_currentLanguage = DefaultLanguage;
    auto chosen = own.Value(ChoiceSection, ChoiceKey);
    if (!chosen) {
        chosen = shared.Value(ChoiceSection, ChoiceKey);
    }
    if (chosen && IsSafeStem(*chosen)) {
        m_currentLanguage = CutToUnits(*chosen, MaxLanguageNameUnits);
    }

    std::vector<std::string> lines = own.Lines(MenuSection, MenuLimits);
    if (lines.empty()) {
        lines = shared.Lines(MenuSection, MenuLimits);
    }
    for (const std::string& line : lines) {
        const IniPair pair = SplitIniLine(line);
        m_languages.push_back({std::string(pair.key), std::string(pair.value)});
    }
}

void LanguageManager::LoadLanguageFile()
{
    const IniReader file =
        IniReader::FromFile(m_paths.dataFolder / "Languages" / (m_currentLanguage + ".ini"));
    {
        // Emptied, not erased: windows hold references to their sections.
        const std::scoped_lock guard(m_lock);
        for (auto& [name, section] : m_sections) {
            section.Clear();
        }
    }
    for (const std::string& name : file.SectionNames(SectionNameLimits)) {
        LanguageSection& section = GetSection(name);
        for (const std::string& line : file.Lines(name, LineLimits)) {
            const IniPair pair = SplitIniLine(line);
            section.Set(pair.key, pair.value);
        }
    }
}

ResultCode LanguageManager::WriteChoice() const
{
    const std::filesystem::path& own = m_paths.userConfigPath;
    // Once the user has a file, it wins at the next start, so the choice must stand there.
    if (own.empty() || !PathExists(own)) {
        const ResultCode result = WriteChoiceTo(ConfigIn(m_paths.dataFolder), m_currentLanguage);
        if (result == ResultSuccess || own.empty()) {
            return result;
        }
    }
    const ResultCode folder = MakePrivateFolderWithParents(own.parent_path());
    return FolderIsThere(folder) ? WriteChoiceTo(own, m_currentLanguage) : folder;
}
