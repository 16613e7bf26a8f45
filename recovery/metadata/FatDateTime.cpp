#include "recovery/metadata/FatDateTime.h"

#include "platform/FileTime.h"

namespace {

constexpr std::int32_t FirstYear = 1980;

CalendarTime Calendar(std::uint16_t date, std::uint16_t time)
{
    CalendarTime calendar;
    calendar.year = (date >> 9) + FirstYear;
    calendar.month = (date >> 5) & 15;
    calendar.day = date & 31;
    calendar.hour = time >> 11;
    calendar.minute = (time >> 5) & 63;
    calendar.second = (time & 31) * 2;
    return calendar;
}

}  // namespace

std::uint64_t FileTimeFromFat(std::uint16_t date, std::uint16_t time)
{
    return FileTimeFromCalendar(Calendar(date, time));
}

std::uint64_t FileTimeFromFatCreation(std::uint16_t date, std::uint16_t time, std::uint8_t tenths)
{
    CalendarTime calendar = Calendar(date, time);
    std::int32_t rest = tenths;
    // 100 itself carries nothing: the record gets a hundred milliseconds, not a second.
    if (rest > 100) {
        calendar.second += rest / 100;
        rest %= 100;
    }
    calendar.millisecond = rest / 10 * 10;
    return FileTimeFromCalendar(calendar);
}
