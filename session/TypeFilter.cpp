#include "session/TypeFilter.h"

#include "platform/Text.h"
#include "recovery/FileRecoveryParse.h"
#include "recovery/FileTypeCatalogue.h"

namespace {

struct FamilyWord
{
    std::string_view word;
    const std::string_view* family;
};

constexpr FamilyWord Families[] = {
    {"photo", &FamilyPhoto},       {"audio", &FamilyAudio},     {"video", &FamilyVideo},
    {"document", &FamilyDocument}, {"archive", &FamilyArchive},
};

constexpr std::size_t LongestPattern = 4095;  // what the search takes

}  // namespace

TypeFilter TypeFilter::All()
{
    TypeFilter filter;
    filter.m_all = true;
    filter.m_pattern = AllFilesPattern;
    return filter;
}

// False for a word that can be no extension.
bool TypeFilter::AddWord(const std::string& word)
{
    if (word == "all") {
        m_all = true;
        return true;
    }
    if (word == "others") {
        m_others = true;
        return true;
    }
    for (const FamilyWord& row : Families) {
        if (word == row.word) {
            m_families.push_back(*row.family);
            m_pattern += *row.family;
            return true;
        }
    }
    if (word.empty() || word.find_first_of("./\\|*?") != std::string::npos) {
        return false;
    }
    m_extensions.insert(word);
    m_pattern += "*." + word + "|";
    return true;
}

std::optional<TypeFilter> TypeFilter::Parse(std::string_view list)
{
    TypeFilter filter;
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        const std::string word = LowerAscii(list.substr(at, end - at));
        const std::size_t mark = word.starts_with("*.") ? 2 : word.starts_with('.') ? 1 : 0;
        if (!filter.AddWord(word.substr(mark))) {
            return std::nullopt;
        }
        at = end + 1;
    }
    if (filter.m_all || filter.m_others || filter.m_pattern.size() > LongestPattern) {
        filter.m_pattern = AllFilesPattern;
    }
    return filter;
}

bool TypeFilter::Accepts(const FileRecord& record) const
{
    std::string extension;
    if (m_all) {
        return true;
    }
    if (ExtensionOf(record.NameText(), extension) != ResultSuccess) {
        return false;
    }
    extension = LowerAscii(extension);
    // The search for every file also brings pictures whose head is gone, which no other list shows.
    if (record.HeadIntact == 0 && InFamily(FamilyPhoto, extension)) {
        return false;
    }
    if (m_extensions.contains(extension) ||
        (m_others && CategoryFolderName(record.NameText()) == "others")) {
        return true;
    }
    for (const std::string_view family : m_families) {
        if (InFamily(family, extension)) {
            return true;
        }
    }
    return false;
}
