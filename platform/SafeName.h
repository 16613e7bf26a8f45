// What keeps a hostile name from choosing where a restored file lands.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// The longest component that the common file systems take, in bytes.
inline constexpr std::size_t LongestComponent = 255;
// Of one letter of a name.
inline constexpr std::size_t LongestLetter = 4;

// What a file system allows in its names.
enum class NameRules
{
    Plain,   // all but "/"
    Windows  // FAT, exFAT and NTFS
};

// One path component made of a name from a source: "/", NUL and control characters become "_", and a
// result that is empty, "." or ".." becomes underscores. At most 255 bytes, the last extension kept where it leaves room for
// a stem. By Windows' rules a colon and its like become "_" too, no name ends in a full stop or a blank, and none is a
// device's.
std::string SafeFileName(std::string_view name, NameRules rules = NameRules::Plain);

// A relative path made of a folder path from a source whose separator is "\": each component made safe,
// empty ones left out.
std::filesystem::path SafeFolderPath(std::string_view folderPath,
                                     NameRules rules = NameRules::Plain);
