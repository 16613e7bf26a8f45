// Bytes, times and result codes.
#include "platform/ByteView.h"
#include "platform/FileTime.h"
#include "platform/ResultCode.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

TEST(ByteView, ReadsInsideAndGivesZeroOutside)
{
    const ByteVector bytes = Bytes("01 02 03 04 05 06 07 08 'text'");
    const ByteView view(bytes);
    EXPECT_EQ(view.U16(1), 0x0302);
    EXPECT_EQ(view.U32(0), 0x04030201u);
    EXPECT_EQ(view.U64(0), 0x0807060504030201u);
    EXPECT_EQ(view.U16Be(1), 0x0203);
    EXPECT_EQ(view.U32Be(4), 0x05060708u);
    EXPECT_EQ(view.U32(9), 0u) << "one byte of it lies outside";
    EXPECT_EQ(view.U64(SIZE_MAX - 3), 0u) << "offset and width together wrap";
    EXPECT_FALSE(view.Covers(SIZE_MAX, 2));
    EXPECT_TRUE(view.Covers(12, 0));
    EXPECT_TRUE(view.Matches(8, "text"));
    EXPECT_FALSE(view.Matches(9, "ext!"));
    EXPECT_FALSE(view.Matches(13, ""));
    EXPECT_EQ(view.Sub(8, 100).Size(), 4u);
    EXPECT_TRUE(view.Sub(13).Empty());
    EXPECT_TRUE(ByteView(nullptr, 5).Empty());
    EXPECT_TRUE(ByteView(bytes.data(), -1).Empty());
    ByteVector zeros(19);
    EXPECT_TRUE(ByteView(zeros).AllZero());
    for (const std::size_t at : {0u, 7u, 15u, 16u, 18u}) {
        zeros[at] = 1;
        EXPECT_FALSE(ByteView(zeros).AllZero()) << at;
        zeros[at] = 0;
    }
}

TEST(FileTime, AgreesWithTheCalendarBothWays)
{
    const std::pair<CalendarTime, std::uint64_t> cases[] = {
        {{1601, 1, 1, 0, 0, 0, 0}, 0},
        {{1970, 1, 1, 0, 0, 0, 0}, 116444736000000000},
        {{1980, 1, 1, 0, 0, 0, 0}, 119600064000000000},
        {{1999, 12, 31, 12, 0, 0, 0}, 125911152000000000},
        {{2000, 2, 29, 23, 59, 59, 990}, 125963423999900000},
        {{2107, 12, 31, 23, 59, 58, 0}, 159992927980000000},
    };
    for (const auto& [time, ticks] : cases) {
        EXPECT_EQ(FileTimeFromCalendar(time), ticks) << time.year;
        const CalendarTime back = CalendarFromFileTime(ticks);
        EXPECT_EQ(std::tie(back.year, back.month, back.day, back.hour, back.minute, back.second,
                           back.millisecond),
                  std::tie(time.year, time.month, time.day, time.hour, time.minute, time.second,
                           time.millisecond));
    }
    const CalendarTime wrong[] = {
        {1900, 2, 29, 0, 0, 0, 0},   {2021, 6, 31, 0, 0, 0, 0}, {2020, 0, 1, 0, 0, 0, 0},
        {2020, 13, 1, 0, 0, 0, 0},   {2020, 1, 0, 0, 0, 0, 0},  {2020, 1, 1, 24, 0, 0, 0},
        {2020, 1, 1, 0, 60, 0, 0},   {2020, 1, 1, 0, 0, 60, 0}, {1600, 12, 31, 0, 0, 0, 0},
        {2020, 1, 1, 0, 0, 0, 1000}, {-1, 1, 1, 0, 0, 0, 0},    {2020, -1, 1, 0, 0, 0, 0},
    };
    for (const CalendarTime& time : wrong) {
        EXPECT_EQ(FileTimeFromCalendar(time), 0u)
            << time.year << '-' << time.month << '-' << time.day;
    }
    EXPECT_EQ(FileTimeFromUnix(0, 0), 116444736000000000u);
    EXPECT_EQ(FileTimeFromUnix(-1, 999999900), 116444735999999999u);
}

TEST(ResultCodes, AnErrnoMeansWhatWasBeingDone)
{
    struct Row
    {
        int errorNumber;
        FileOperation operation;
        ResultCode code;
    };
    using enum FileOperation;
    const Row rows[] = {
        {ENOENT, Open, 2},    {ENXIO, Open, 2},          {ENODEV, Read, 1167},
        {EIO, Read, 30},      {EIO, Write, 29},          {EIO, Seek, 25},
        {EIO, Query, 1117},   {EEXIST, MakeFolder, 183}, {EEXIST, Open, 80},
        {EACCES, Open, 5},    {EROFS, Write, 19},        {ENOSPC, Write, 112},
        {EDQUOT, Write, 112}, {EFBIG, Write, 223},       {EINVAL, Read, 87},
        {EINVAL, Open, 123},  {ENOMEDIUM, Open, 21},     {ENAMETOOLONG, Open, 206},
        {EBUSY, Open, 32},    {123456, Open, 31},
    };
    for (const Row& row : rows) {
        const ResultCode code = ErrorFromErrno(row.errorNumber, row.operation);
        EXPECT_EQ(code, row.code) << row.errorNumber;
        EXPECT_FALSE(ErrorText(code).starts_with("Error ")) << code << " has no text";
    }
    EXPECT_EQ(ErrorText(4321), "Error 4321.");
}

}  // namespace
