#include "cli/TextForms.h"

#include "platform/FileTime.h"
#include "platform/Text.h"

#include <cstdio>

namespace {

// Marks of direction, separators of lines, and what has neither width nor a meaning in a name. Joiners stay: whole
// scripts are written with them.
bool IsMark(char16_t unit)
{
    return unit == 0x061C || unit == 0x180E || unit == 0x200B || unit == 0x200E || unit == 0x200F ||
           (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2060 && unit <= 0x206F) ||
           unit == 0xFEFF || (unit >= 0xFFF9 && unit <= 0xFFFB);
}

}  // namespace

std::string SizeText(std::uint64_t bytes)
{
    constexpr const char* Units[] = {"KB", "MB", "GB", "TB", "PB", "EB"};
    if (bytes < 1024) {
        return std::to_string(bytes) + " B";
    }
    double value = static_cast<double>(bytes) / 1024;
    std::size_t unit = 0;
    for (; value >= 1024 && unit + 1 < std::size(Units); ++unit) {
        value /= 1024;
    }
    char text[48] = {};
    std::snprintf(text, sizeof text, "%.1f %s", value, Units[unit]);
    return text;
}

std::string TimeText(std::uint64_t fileTime)
{
    if (fileTime == 0) {
        return {};
    }
    const CalendarTime time = CalendarFromFileTime(fileTime);
    char text[96] = {};
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", time.year, time.month,
                  time.day, time.hour, time.minute, time.second);
    return text;
}

std::string DurationText(std::int32_t seconds)
{
    char text[48] = {};
    if (seconds >= 3600) {
        std::snprintf(text, sizeof text, "%d:%02d:%02d", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    } else {
        std::snprintf(text, sizeof text, "%d:%02d", seconds / 60, seconds % 60);
    }
    return text;
}

std::string Printable(std::string_view text)
{
    std::u16string shown;
    for (const char16_t unit : Utf8ToUtf16(text)) {
        if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) {
            shown += u'?';
        } else if (IsMark(unit)) {
            char escaped[16] = {};
            std::snprintf(escaped, sizeof escaped, "\\u%04X", unsigned{unit});
            shown += Utf8ToUtf16(escaped);
        } else {
            shown += unit;
        }
    }
    return Utf16ToUtf8(shown);
}

std::string CountText(std::uint64_t count, std::string_view noun)
{
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}
