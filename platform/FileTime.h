// FILETIME values: 100 ns since 1601-01-01, unsigned 64-bit, no time zone. And the process's clocks.
#pragma once

#include <cstdint>

struct CalendarTime
{
    std::int32_t year = 0;  // 1601 and later
    std::int32_t month = 0;
    std::int32_t day = 0;
    std::int32_t hour = 0;
    std::int32_t minute = 0;
    std::int32_t second = 0;
    std::int32_t millisecond = 0;
};

// 0 for a time that does not exist, such as a 31st of June, a minute 60 or a second 60.
std::uint64_t FileTimeFromCalendar(const CalendarTime& time);
// The calendar form of a FILETIME; the year is cut at 30827, the last that the format knows.
CalendarTime CalendarFromFileTime(std::uint64_t fileTime);
// From seconds and nanoseconds since 1970; times before 1601 wrap, as their files do not exist.
std::uint64_t FileTimeFromUnix(std::int64_t seconds, std::int64_t nanoseconds);

// The wall clock in the local time zone.
CalendarTime LocalTimeNow();
// Milliseconds of a clock that never goes back.
std::uint64_t TickMilliseconds();
