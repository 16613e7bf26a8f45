#include "recovery/metadata/NtfsRecordCodec.h"

#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <ostream>

namespace {

struct RunListCase
{
    const char* name;
    const char* runs;  // from offset 64 of an attribute of 96 bytes
    RunList expected;

    friend void PrintTo(const RunListCase& value, std::ostream* out) { *out << value.name; }
    friend std::ostream& operator<<(std::ostream& out, const RunListCase& value)
    {
        return out << value.name;
    }
};

ByteVector AttributeWith(const ByteVector& runs, std::uint32_t length)
{
    ByteVector attribute(std::max<std::size_t>(length, 64 + runs.size()));
    attribute[4] = static_cast<std::uint8_t>(length);
    attribute[5] = static_cast<std::uint8_t>(length >> 8);
    attribute[32] = 64;
    std::copy(runs.begin(), runs.end(), attribute.begin() + 64);
    return attribute;
}

class RunListTest : public testing::TestWithParam<RunListCase>
{};

TEST_P(RunListTest, Decodes)
{
    RunList runs;
    NtfsRecordCodec().DecodeRunList(ByteView(AttributeWith(Bytes(GetParam().runs), 96)), runs);
    EXPECT_EQ(runs, GetParam().expected);
}

const RunListCase RunListCases[] = {
    {"ZeroHeader", "00 11 05 05", {}},
    {"BothNibblesTooLarge", "88 01 01", {}},
    {"LengthNibbleTooLarge", "18 01 02 03 04 05 06 07 08 01", {}},
    {"SparseHasNoOffset", "01 05 00", {{5, 0}}},
    {"OneByteMinusOne", "11 05 FF 00", {{5, -1}}},
    {"OffsetsAreNotAddedUp", "11 05 10 11 03 F0 00", {{5, 16}, {3, -16}}},
    {"LengthIsCutTo32Bits", "15 01 02 03 04 FF 01 00", {{0x04030201, 1}}},
    {"FourBytesNegative", "41 01 00 00 00 80 00", {{1, -0x80000000LL}}},
    {"FiveBytesPlain", "51 01 00 00 00 80 01 00", {{1, 0x180000000LL}}},
    // Byte 3 counts as signed, so 2^32 is missing.
    {"FiveBytesNegative", "51 01 00 00 00 80 FF 00", {{1, -0x180000000LL}}},
    // Bytes 4 and 5 are shifted out.
    {"SevenBytesNegative", "71 01 01 00 00 00 55 66 FF 00", {{1, 1 - 0x1000000000000LL}}},
};

INSTANTIATE_TEST_SUITE_P(Lists,
                         RunListTest,
                         testing::ValuesIn(RunListCases),
                         testing::PrintToStringParamName());

TEST(NtfsRecordCodecTest, RunsEndWhereTheAttributeOrTheBufferEnds)
{
    const NtfsRecordCodec codec;
    ByteVector pairs;
    for (int i = 0; i < 300; ++i) {
        pairs.insert(pairs.end(), {0x01, 0x05});
    }
    // Two bytes a run from 64 on; an attribute as long as a sector has none.
    for (const std::uint32_t length : {64U, 65U, 67U, 511U, 512U, 600U}) {
        RunList runs;
        codec.DecodeRunList(ByteView(AttributeWith(pairs, length)), runs);
        EXPECT_EQ(runs.size(), length >= 512 ? 0U : (length - 64 + 1) / 2) << length;
    }
    // Cut anywhere, a run whose bytes are not all there is none.
    const ByteVector whole = AttributeWith(Bytes("21 05 10 20 31 03 01 02 03 00"), 96);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        RunList runs;
        codec.DecodeRunList(ByteView(whole.data(), size), runs);
        EXPECT_EQ(runs.size(), size < 68 ? 0U : size < 73 ? 1U : 2U) << size;
    }
}

TEST(NtfsRecordCodecTest, FixupsGoBlindlyOverTheTailsInsideTheBuffer)
{
    NtfsRecordCodec codec;
    ByteVector record = RandomBytes(1024, 1);
    record[0] = 'F';
    const ByteVector before = record;
    EXPECT_EQ(codec.ApplyFixups(record), ResultSuccess);
    EXPECT_EQ((ByteVector{record[510], record[511], record[1022], record[1023]}),
              (ByteVector{before[50], before[51], before[52], before[53]}));
    record[0] = 0;
    EXPECT_EQ(codec.ApplyFixups(record), ResultNoFileRecord);
    EXPECT_EQ(record[510] + record[511] + record[1022] + record[1023], 0);
    EXPECT_EQ(codec.SetSectorSize(16384), ResultSuccess);
    ByteVector small = before;
    EXPECT_EQ(codec.ApplyFixups(small), ResultSuccess);
    EXPECT_EQ(small, before);
}

}  // namespace
