// What keeps a hostile name from choosing where a restored file lands.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// The longest component that the common file systems take, in bytes.
inline constexpr std::size_t LongestComponent = 255;

// One path component made of a name from a source: "/", NUL and control characters become "_", and a
// result that is empty, "." or ".." becomes underscores. At most 255 bytes, the last extension kept.
std::string SafeFileName(std::string_view name);

// A relative path made of a folder path from a source whose separator is "\": each component made safe,
// empty ones left out.
std::filesystem::path SafeFolderPath(std::string_view folderPath);
