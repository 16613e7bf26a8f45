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
    // Extensions and photo, audio, video, document, archive, others, with commas between them; or all. Nothing when the list
    // is not valid.
    static std::optional<TypeFilter> Parse(std::string_view list);
    static TypeFilter All();

    // What to search for: finds at least what Accepts takes.
    const std::string& SearchPattern() const { return m_pattern; }
    bool Accepts(const FileRecord& record) const;

private:
    bool AddWord(const std::string& word);

    std::string m_pattern;
    std::vector<std::string_view> m_families;  // texts of the catalogue
    std::set<std::string, std::less<>> m_extensions;
    bool m_others = false;
    bool m_all = false;
};
