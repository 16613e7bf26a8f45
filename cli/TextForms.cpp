#include "cli/TextForms.h"

#include "platform/FileTime.h"

#include <algorithm>
#include <cstdio>

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

std::string CountText(std::uint64_t count, std::string_view noun)
{
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

namespace {

struct Range
{
    char32_t first;
    char32_t last;
};

// What terminals show in two columns: scripts of East Asia, and pictures.
constexpr Range Wide[] = {{0x1100, 0x115F}, {0x2E80, 0x303E},   {0x3041, 0xA4CF},  {0xA960, 0xA97F},
                          {0xAC00, 0xD7A3}, {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},  {0xFF00, 0xFF60},
                          {0xFFE0, 0xFFE6}, {0x1F300, 0x1FAFF}, {0x20000, 0x3FFFD}};
// Marks that combine with the sign before them.
constexpr Range Joined[] = {{0x0300, 0x036F}, {0x200C, 0x200D}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}};

std::size_t ColumnsOf(char32_t sign)
{
    const auto holds = [sign](const Range& range) {
        return sign >= range.first && sign <= range.last;
    };
    if (std::any_of(std::begin(Joined), std::end(Joined), holds)) {
        return 0;
    }
    return std::any_of(std::begin(Wide), std::end(Wide), holds) ? 2 : 1;
}

// The signs of a text, with the end of each in units.
template <typename Visit>
void ForEachSign(const std::u16string& text, const Visit& visit)
{
    for (std::size_t at = 0; at < text.size();) {
        char32_t sign = text[at++];
        if (sign >= 0xD800 && sign < 0xDC00 && at < text.size()) {
            sign = 0x10000 + ((sign & 0x3FF) << 10) + (char32_t{text[at++]} & 0x3FF);
        }
        visit(sign, at);
    }
}

}  // namespace

std::size_t ColumnsOf(std::string_view text)
{
    std::size_t columns = 0;
    ForEachSign(Utf8ToUtf16(text),
                [&columns](char32_t sign, std::size_t /*end*/) { columns += ColumnsOf(sign); });
    return columns;
}

std::string CutToColumns(std::string_view text, std::size_t columns)
{
    constexpr std::string_view Mark = "...";
    if (ColumnsOf(text) <= columns) {
        return std::string(text);
    }
    const std::size_t room = columns > Mark.size() ? columns - Mark.size() : 0;
    const std::u16string whole = Utf8ToUtf16(text);
    std::size_t used = 0;
    std::size_t kept = 0;
    ForEachSign(whole, [&](char32_t sign, std::size_t end) {
        used += ColumnsOf(sign);
        kept = used <= room ? end : kept;
    });
    return Utf16ToUtf8(whole.substr(0, kept)) + std::string(Mark.substr(0, columns));
}

std::string Cell(std::string_view text, std::size_t columns)
{
    std::string cell = CutToColumns(Printable(text), columns - 1);
    return cell + std::string(columns - ColumnsOf(cell), ' ');
}
