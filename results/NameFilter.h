// Which files of a type the list shows: those whose name has a part that the user has typed.
#pragma once

#include <string>
#include <string_view>

class NameFilter
{
public:
    // Takes every name.
    NameFilter() = default;
    explicit NameFilter(std::string_view part);

    bool IsEmpty() const { return m_part.empty(); }
    // Small and capital letters are the same, in all scripts.
    bool Takes(std::string_view name) const;

private:
    std::string m_part;  // folded
};
