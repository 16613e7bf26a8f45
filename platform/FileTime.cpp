#include "platform/FileTime.h"

#include <chrono>
#include <ctime>

namespace {

constexpr std::int64_t SecondsFrom1601To1970 = 11'644'473'600;
constexpr std::uint64_t TicksPerSecond = 10'000'000;
constexpr std::uint64_t TicksPerMillisecond = 10'000;
constexpr std::uint64_t TicksPerDay = 86'400 * TicksPerSecond;
constexpr std::uint64_t LastFileTime = 0x7FFFFFFFFFFFFFFF;  // year 30827

using Days = std::chrono::sys_days;

bool IsValidClock(const CalendarTime& time)
{
    return time.hour >= 0 && time.hour < 24 && time.minute >= 0 && time.minute < 60 &&
           time.second >= 0 && time.second < 60 && time.millisecond >= 0 && time.millisecond < 1000;
}

}  // namespace

std::uint64_t FileTimeFromCalendar(const CalendarTime& time)
{
    const std::chrono::year_month_day date{std::chrono::year(time.year),
                                           std::chrono::month(static_cast<unsigned>(time.month)),
                                           std::chrono::day(static_cast<unsigned>(time.day))};
    if (time.year < 1601 || time.year > 30827 || !date.ok() || !IsValidClock(time)) {
        return 0;
    }
    const auto seconds = Days{date}.time_since_epoch().count() * std::int64_t{86'400} +
                         std::int64_t{time.hour} * 3600 + std::int64_t{time.minute} * 60 +
                         time.second;
    return static_cast<std::uint64_t>(seconds + SecondsFrom1601To1970) * TicksPerSecond +
           static_cast<std::uint64_t>(time.millisecond) * TicksPerMillisecond;
}

CalendarTime CalendarFromFileTime(std::uint64_t fileTime)
{
    fileTime = fileTime < LastFileTime ? fileTime : LastFileTime;
    const Days first = std::chrono::year(1601) / 1 / 1;
    const std::chrono::year_month_day date(
        first + std::chrono::days(static_cast<int>(fileTime / TicksPerDay)));
    const std::uint64_t rest = fileTime % TicksPerDay;
    const auto second = static_cast<std::int32_t>(rest / TicksPerSecond);
    CalendarTime out;
    out.year = static_cast<int>(date.year());
    out.month = static_cast<std::int32_t>(static_cast<unsigned>(date.month()));
    out.day = static_cast<std::int32_t>(static_cast<unsigned>(date.day()));
    out.hour = second / 3600;
    out.minute = second / 60 % 60;
    out.second = second % 60;
    out.millisecond = static_cast<std::int32_t>(rest % TicksPerSecond / TicksPerMillisecond);
    return out;
}

std::uint64_t FileTimeFromUnix(std::int64_t seconds, std::int64_t nanoseconds)
{
    return (static_cast<std::uint64_t>(seconds) +
            static_cast<std::uint64_t>(SecondsFrom1601To1970)) *
               TicksPerSecond +
           static_cast<std::uint64_t>(nanoseconds / 100);
}

CalendarTime LocalTimeNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    ::localtime_r(&now, &local);
    CalendarTime out;
    out.year = local.tm_year + 1900;
    out.month = local.tm_mon + 1;
    out.day = local.tm_mday;
    out.hour = local.tm_hour;
    out.minute = local.tm_min;
    out.second = local.tm_sec;
    return out;
}

std::uint64_t TickMilliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}
