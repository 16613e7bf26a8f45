// Dates and times of FAT directory entries as FILETIME values, no time zone applied.
#pragma once

#include <cstdint>

// 0 for a date or time that does not exist: second 60 and 62, the day 0, and the like.
// date: bits 15-9 year since 1980, 8-5 month, 4-0 day. time: bits 15-11 hour, 10-5 minute, 4-0 two seconds.
std::uint64_t FileTimeFromFat(std::uint16_t date, std::uint16_t time);
// The creation form: tenths above 100 add their hundreds to the seconds; the rest, rounded down to a multiple
// of 10, is the milliseconds.
std::uint64_t FileTimeFromFatCreation(std::uint16_t date, std::uint16_t time, std::uint8_t tenths);
