// Reads the program's INI files, which users edit: UTF-8 with or without a byte order mark, any line
// ends. Whatever the file holds, reading it ends and gives valid UTF-8.
//
// A line is a section's name in brackets or "key=value"; blanks around either part are dropped, quotes
// stay. Left out: blank lines, comments (";" first), lines without "=" or without a key, and lines
// before the first section. Section names and keys are matched without regard to the case of A to Z;
// sections of one name are read as one.
#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How much of a list is read, in UTF-16 units; what exceeds it is cut, at a code point.
struct IniLimits
{
    std::size_t all = 0;   // of all entries, each with one unit for its end
    std::size_t each = 0;  // of one entry
};

class IniReader
{
public:
    // Nothing past this is read: a language file is a hundredth of it.
    static constexpr std::size_t MaxFileBytes = std::size_t{1} << 20;

    IniReader() = default;
    explicit IniReader(std::string_view text);
    // A file that is missing, unreadable or no regular file reads as an empty one.
    static IniReader FromFile(const std::filesystem::path& path);

    // In file order; a name that comes twice is given twice.
    std::vector<std::string> SectionNames(const IniLimits& limits) const;
    // "key=value", in file order.
    std::vector<std::string> Lines(std::string_view section, const IniLimits& limits) const;
    // The value of the first line with that key, without the pair of quotes around it, if it has one.
    std::optional<std::string> Value(std::string_view section, std::string_view key) const;

private:
    std::vector<std::string> m_names;
    std::map<std::string, std::vector<std::string>> m_lines;  // by the name in small letters
};

// The text of a regular file up to MaxFileBytes; nothing when it is larger or cannot be read.
std::optional<std::string> ReadIniText(const std::filesystem::path& path);

// The text of an INI file with one value set, all else kept byte for byte: the first line of that key
// is replaced, else a line is put after the section's head, else the section is added at the end.
std::string WithIniValue(std::string_view text,
                         std::string_view section,
                         std::string_view key,
                         std::string_view value);

// The text before and after the first "="; both views point into line. A line without one is all key.
struct IniPair
{
    std::string_view key;
    std::string_view value;
};
IniPair SplitIniLine(std::string_view line);

// The longest beginning of valid UTF-8 that has at most maxUnits UTF-16 units.
std::string_view CutToUnits(std::string_view text, std::size_t maxUnits);
