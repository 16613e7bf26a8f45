// How the command line writes sizes, times and names.
#pragma once

#include "platform/Text.h"

#include <cstdint>
#include <string>
#include <string_view>

// "512 B", "1.5 KB", "3.2 GB", in units of 1024.
std::string SizeText(std::uint64_t bytes);
// "2024-05-17T08:30:12" of a FILETIME, without a time zone as none is known; empty for 0.
std::string TimeText(std::uint64_t fileTime);
// "3:10", "1:03:10".
std::string DurationText(std::int32_t seconds);
// Columns that a text takes on a terminal.
std::size_t ColumnsOf(std::string_view text);
// The text, or its beginning and "..." where it takes more.
std::string CutToColumns(std::string_view text, std::size_t columns);
// A column of a table: printable, cut where it is too long, and filled up with spaces, of which there is at least one.
std::string Cell(std::string_view text, std::size_t columns);
// "file", "files".
std::string CountText(std::uint64_t count, std::string_view noun);
