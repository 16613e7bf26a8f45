#include "session/TypeFilter.h"

#include "platform/Text.h"
#include "recovery/FileRecoveryParse.h"
#include "recovery/FileTypeCatalogue.h"
#include "recovery/carving/SignatureTable.h"

#include <algorithm>
#include <sstream>

namespace {

struct FamilyWord
{
    std::string_view word;
    const std::string_view* family;
    std::string_view otherWords;  // with a space on each side
};

constexpr FamilyWord Families[] = {
    {"photo", &FamilyPhoto,
     " photos photograph photographs picture pictures pics image images img imgs "},
    {"audio", &FamilyAudio, " audios music sound sounds song songs "},
    {"video", &FamilyVideo, " videos movie movies film films clip clips "},
    {"document", &FamilyDocument, " documents docs text texts "},
    {"archive", &FamilyArchive, " archives "},
};

// Different ways to write the extension of one type.
constexpr std::string_view SameTypes[] = {
    " jpg jpeg jpe jfif ", " tif tiff ", " mpg mpeg ", " mid midi ", " gz gzip ",
    " htm html ",          " aif aiff ", " 3gp 3gpp ", " rm rmvb ",
};

constexpr std::size_t LongestPattern = 4095;  // what the search takes

bool IsOneOf(std::string_view words, const std::string& word)
{
    return words.find(" " + word + " ") != std::string_view::npos;
}

std::string_view SameTypesAs(const std::string& extension)
{
    for (const std::string_view row : SameTypes) {
        if (IsOneOf(row, extension)) {
            return row;
        }
    }
    return {};
}

bool IsKnownExtension(const std::string& extension)
{
    const std::string inFamily = "*." + extension + "|";
    for (const FamilyWord& row : Families) {
        if (row.family->find(inFamily) != std::string_view::npos) {
            return true;
        }
    }
    return LookupTypeByExtension(extension) != FileTypeId::None || !SameTypesAs(extension).empty();
}

// Of "*.bmp|*.gif|".
std::vector<std::string> ExtensionsOf(std::string_view family)
{
    std::vector<std::string> extensions;
    for (std::size_t at = 0; at < family.size();) {
        const std::size_t end = std::min(family.find('|', at), family.size());
        extensions.emplace_back(family.substr(at + 2, end - at - 2));
        at = end + 1;
    }
    return extensions;
}

std::string Trimmed(std::string_view text)
{
    constexpr std::string_view Blank = " \t";
    const std::size_t first = text.find_first_not_of(Blank);
    return first == std::string_view::npos
               ? std::string()
               : LowerAscii(text.substr(first, text.find_last_not_of(Blank) - first + 1));
}

}  // namespace

TypeFilter TypeFilter::All()
{
    TypeFilter filter;
    filter.m_all = true;
    filter.m_pattern = AllFilesPattern;
    return filter;
}

std::string TypeFilter::KnownTypes()
{
    std::string text;
    for (const FamilyWord& row : Families) {
        text += std::string(row.word) + " (";
        for (const std::string& extension : ExtensionsOf(*row.family)) {
            text += extension + ", ";
        }
        text.replace(text.size() - 2, 2, "), ");
    }
    return text + "others, all";
}

std::vector<std::string> TypeFilter::Words()
{
    std::vector<std::string> words;
    for (const FamilyWord& row : Families) {
        words.emplace_back(row.word);
    }
    words.insert(words.end(), {"others", "all"});
    for (const FamilyWord& row : Families) {
        for (std::string& extension : ExtensionsOf(*row.family)) {
            words.push_back(std::move(extension));
        }
    }
    return words;
}

void TypeFilter::AddExtension(const std::string& extension)
{
    if (m_extensions.insert(extension).second) {
        m_pattern += "*." + extension + "|";
    }
}

// False for a word that is no type.
bool TypeFilter::AddWord(std::string word)
{
    const std::size_t mark = word.starts_with("*.") ? 2 : word.starts_with('.') ? 1 : 0;
    word.erase(0, mark);
    if (word.empty() || word.find_first_of("./\\|*?") != std::string::npos) {
        return false;
    }
    if (mark == 0 && (word == "all" || word == "everything")) {
        m_all = true;
        return true;
    }
    if (mark == 0 && (word == "others" || word == "other")) {
        m_others = true;
        return true;
    }
    for (const FamilyWord& row : Families) {
        if (mark == 0 && (word == row.word || IsOneOf(row.otherWords, word))) {
            m_families.push_back(*row.family);
            m_pattern += *row.family;
            return true;
        }
    }
    if (mark == 0 && !IsKnownExtension(word)) {
        return false;
    }
    AddExtension(word);
    std::istringstream same{std::string(SameTypesAs(word))};
    for (std::string other; same >> other;) {
        AddExtension(other);
    }
    return true;
}

std::optional<TypeFilter> TypeFilter::Parse(std::string_view list, std::string* outWrong)
{
    TypeFilter filter;
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        const std::string word = Trimmed(list.substr(at, end - at));
        if (!filter.AddWord(word)) {
            if (outWrong != nullptr) {
                *outWrong = word;
            }
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
