#include "texts/TextFormat.h"

#include "platform/FileTime.h"
#include "texts/TextForms.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(TextFormat, TakesTheArgumentsInOrder)
{
    const std::string name = "a%sb";
    EXPECT_EQ(FormatText("%s %d%%", "Done:", 7), "Done: 7%");
    EXPECT_EQ(FormatText("%s|%c|%d", name, u'\u00C4', std::uint64_t{1} << 63),
              "a%sb|\u00C4|9223372036854775808");
    EXPECT_EQ(FormatText("%c%c", U'\U0001F4F7', 'x'), "\U0001F4F7x");
    EXPECT_EQ(FormatText("%d %d", std::numeric_limits<std::int64_t>::min(), std::uint8_t{200}),
              "-9223372036854775808 200");
    EXPECT_EQ(FormatText("\u30C9 %d \u3092", 3), "\u30C9 3 \u3092");
}

TEST(TextFormat, AnOddFormatDoesNoHarm)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},  // the label stays empty
        {"no placeholder", "no placeholder"},
        {"%", "%"},
        {"100%", "100%"},
        {"%%%", "%%"},
        {"%n%x%5d", "%n%x%5d"},
        {"%S %I64u", "%S %I64u"},
        {"% d", "% d"},
        {"%%s", "%s"},
        {"%d %s", "one 2"},  // of another kind
        {"%c", "one"},
        {"%s%s%s%d.", "one2."},  // more than there are
    };
    for (const auto& [format, text] : cases) {
        EXPECT_EQ(FormatText(format, "one", 2), text) << format;
    }
    EXPECT_EQ(FormatText("%s%d%c"), "");
    EXPECT_EQ(FormatText("%c%c", char16_t{0xD800}, char32_t{0x110000}), "\uFFFD\uFFFD");
    EXPECT_EQ(FormatText(std::string_view("%s\0%s", 5), "a", "b"), std::string("a\0b", 3));
}

TEST(TextForms, SizesChangeTheUnitAtPowersOf1024)
{
    constexpr std::int64_t Kilo = 1024;
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "0 Bytes"},
        {1, "1 Bytes"},
        {1023, "1023 Bytes"},
        {Kilo, "1.00 KB"},
        {1029, "1.00 KB"},
        {1030, "1.01 KB"},
        {Kilo * Kilo - 1, "1024.00 KB"},
        {Kilo * Kilo, "1.00 MB"},
        {Kilo * Kilo * Kilo - 1, "1024.00 MB"},
        {Kilo * Kilo * Kilo * 3 / 2, "1.50 GB"},
        {Kilo * Kilo * Kilo * Kilo - 1, "1024.00 GB"},
        {Kilo * Kilo * Kilo * Kilo, "1.00 TB"},
        {std::numeric_limits<std::int64_t>::max(), "8388608.00 TB"},
        {-1, "-1 Bytes"},
        {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808 Bytes"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(FormatSize(bytes), text);
    }
}

TEST(TextForms, DurationsShowTheirTwoLargestUnits)
{
    const std::pair<std::int64_t, const char*> cases[] = {
        {0, "0 Sec"},
        {59, "59 Sec"},
        {60, "1 Min 0 Sec"},
        {3599, "59 Min 59 Sec"},
        {3600, "1 Hour 0 Min"},
        {3661, "1 Hour 1 Min"},
        {7199, "1 Hour 59 Min"},
        {360000, "100 Hour 0 Min"},
        {-5, "-5 Sec"},
    };
    for (const auto& [seconds, text] : cases) {
        EXPECT_EQ(FormatDuration(seconds), text);
    }
}

TEST(TextForms, TimesHaveNoZeroBeforeMonthAndDay)
{
    const std::pair<CalendarTime, const char*> cases[] = {
        {{2024, 5, 7, 8, 3, 9, 999}, "2024-5-7 08:03:09"},
        {{1999, 12, 31, 23, 59, 59, 0}, "1999-12-31 23:59:59"},
        {{1601, 1, 2, 0, 0, 0, 0}, "1601-1-2 00:00:00"},
    };
    for (const auto& [time, text] : cases) {
        EXPECT_EQ(FormatFileTime(FileTimeFromCalendar(time)), text);
    }
    EXPECT_EQ(FormatFileTime(0), "1601-1-1 00:00:00");
}

}  // namespace
