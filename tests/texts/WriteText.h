// A text file for a test, with the folders that lead to it.
#pragma once

#include "tests/support/TempFolder.h"

#include <string_view>

inline void WriteText(const std::filesystem::path& path, std::string_view text)
{
    std::filesystem::create_directories(path.parent_path());
    WriteFileBytes(path, ByteVector(text.begin(), text.end()));
}

inline std::string ReadText(const std::filesystem::path& path)
{
    const ByteVector bytes = ReadFileBytes(path);
    return std::string(bytes.begin(), bytes.end());
}
