// How the windows write sizes, times and durations: the same in every language.
#pragma once

#include <cstdint>
#include <string>

// "1.50 GB" in units of 1024 up to "TB"; "17 Bytes" below 1024, and for what is negative.
std::string FormatSize(std::int64_t bytes);
// The same of what counts without a sign.
inline std::string FormatBytes(std::uint64_t bytes)
{
    return FormatSize(static_cast<std::int64_t>(bytes));
}
// "2024-5-17 08:30:12" of a FILETIME as it stands, without a time zone.
std::string FormatFileTime(std::uint64_t fileTime);
// "2 Hour 5 Min", "5 Min 10 Sec" or "10 Sec".
std::string FormatDuration(std::int64_t seconds);
