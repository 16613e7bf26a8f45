// Which found files a face is about, by a list that a user types: "photo,pdf".
#pragma once

#include "recovery/FileRecord.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// Families go by the catalogue, with its wide substring rule; extensions given by name are matched exactly.
class TypeFilter
{
public:
    // Extensions and photo, audio, video, document, archive, others, with commas between them; or all. Other words for a
    // family, and its plural, stand for it; an extension stands for all that are written for the same type. With a full stop
    // in front any extension goes, without one only those that are known. Nothing when the list is not valid; outWrong
    // gets the word then that is no type, or nothing when the list has an empty place.
    static std::optional<TypeFilter> Parse(std::string_view list, std::string* outWrong = nullptr);
    static TypeFilter All();
    // "photo (bmp, gif, ...), audio (...), ...": the words that a list may have.
    static std::string KnownTypes();
    // The same one by one: the families first.
    static std::vector<std::string> Words();

    // What to search for: finds at least what Accepts takes.
    const std::string& SearchPattern() const { return m_pattern; }
    bool Accepts(const FileRecord& record) const;

private:
    bool AddWord(std::string word);
    void AddExtension(const std::string& extension);

    std::string m_pattern;
    std::vector<std::string_view> m_families;  // texts of the catalogue
    std::set<std::string, std::less<>> m_extensions;
    bool m_others = false;
    bool m_all = false;
};
