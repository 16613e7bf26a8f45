#include "texts/TextForms.h"

#include "platform/FileTime.h"
#include "texts/TextFormat.h"

#include <array>
#include <charconv>

namespace {

// Not by printf: a window toolkit sets the locale, which would turn the point into a comma.
std::string TwoDecimals(double value)
{
    std::array<char, 64> text = {};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 2);
    return std::string(text.data(), end.ptr);
}

std::string TwoDigits(std::int32_t value)
{
    return (value < 10 ? "0" : "") + std::to_string(value);
}

}  // namespace

std::string FormatSize(std::int64_t bytes)
{
    struct Unit
    {
        std::int64_t bytes;
        const char* name;
    };
    constexpr Unit Units[] = {{std::int64_t{1} << 40, " TB"},
                              {std::int64_t{1} << 30, " GB"},
                              {std::int64_t{1} << 20, " MB"},
                              {std::int64_t{1} << 10, " KB"}};
    for (const Unit& unit : Units) {
        if (bytes >= unit.bytes) {
            return TwoDecimals(static_cast<double>(bytes) / static_cast<double>(unit.bytes)) +
                   unit.name;
        }
    }
    return std::to_string(bytes) + " Bytes";
}

std::string FormatFileTime(std::uint64_t fileTime)
{
    const CalendarTime time = CalendarFromFileTime(fileTime);
    return FormatText("%d-%d-%d %s:%s:%s", time.year, time.month, time.day, TwoDigits(time.hour),
                      TwoDigits(time.minute), TwoDigits(time.second));
}

std::string FormatDuration(std::int64_t seconds)
{
    if (seconds >= 3600) {
        return FormatText("%d Hour %d Min", seconds / 3600, seconds / 60 % 60);
    }
    if (seconds >= 60) {
        return FormatText("%d Min %d Sec", seconds / 60, seconds % 60);
    }
    return FormatText("%d Sec", seconds);
}
