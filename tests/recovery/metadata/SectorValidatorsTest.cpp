#include "recovery/metadata/SectorValidators.h"

#include "recovery/metadata/FatDateTime.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr std::uint16_t Date2020 = 40 << 9 | 6 << 5 | 15;

void Set16(ByteVector& bytes, std::size_t offset, std::uint16_t value)
{
    bytes[offset] = static_cast<std::uint8_t>(value);
    bytes[offset + 1] = static_cast<std::uint8_t>(value >> 8);
}

ByteVector
Entry(std::string_view name, std::uint8_t attributes, std::uint16_t cluster, std::uint32_t size)
{
    ByteVector entry(32);
    std::copy(name.begin(), name.end(), entry.begin());
    entry[11] = attributes;
    for (const std::size_t date : {16u, 18u, 24u}) {
        Set16(entry, date, Date2020);
    }
    Set16(entry, 26, cluster);
    Set16(entry, 28, static_cast<std::uint16_t>(size));
    return entry;
}

ByteVector Piece(std::uint8_t ordinal, std::uint8_t checksum)
{
    ByteVector piece =
        Bytes("00 'a' 00 'b' 00 'c' 00 'd' 00 'e' 00 0F 00 00 'f' 00 'g' 00 'h' 00 'i' 00 'j' 00 "
              "'k' 00 00 00 'l' 00 'm' 00");
    piece[0] = ordinal;
    piece[13] = checksum;
    return piece;
}

const ByteVector& Photo()
{
    static const ByteVector entry = Entry("PHOTO   JPG", 0x20, 5, 1000);
    return entry;
}

struct EntryCase
{
    const char* name;
    std::function<void(ByteVector&)> change;
    bool expected;
};

TEST(SectorValidators, DirectoryEntriesAreJudgedByTheirFields)
{
    const EntryCase cases[] = {
        {"plain file", [](ByteVector&) {}, true},
        {"no archive bit", [](ByteVector& e) { e[11] = 0; }, false},
        {"archive and read-only", [](ByteVector& e) { e[11] = 0x21; }, true},
        {"label bit with others", [](ByteVector& e) { e[11] = 0x28; }, false},
        {"folder that is read-only", [](ByteVector& e) { e = Entry("DIR        ", 0x11, 5, 0); },
         false},
        {"folder with a size", [](ByteVector& e) { e[11] = 0x10; }, false},
        {"deleted folder with a size", [](ByteVector& e) { e[11] = 0x10, e[0] = 0xE5; }, true},
        {"attribute above 63", [](ByteVector& e) { e[11] = 0x60; }, false},
        {"no size but a cluster", [](ByteVector& e) { e[28] = e[29] = 0; }, false},
        {"folder without a size", [](ByteVector& e) { e = Entry("DIR        ", 0x10, 5, 0); },
         true},
        {"lower case", [](ByteVector& e) { e[2] = 'o'; }, false},
        {"code page letters", [](ByteVector& e) { e[2] = 0x80, e[3] = 0x81; }, true},
        {"dated 1989", [](ByteVector& e) { Set16(e, 24, 9 << 9 | 12 << 5 | 31); }, false},
        {"dated 1990", [](ByteVector& e) { Set16(e, 24, 10 << 9 | 1 << 5 | 1); }, true},
        {"dated 2049", [](ByteVector& e) { Set16(e, 18, 69 << 9 | 12 << 5 | 31); }, true},
        {"first moment of 2050", [](ByteVector& e) { Set16(e, 18, 70 << 9 | 1 << 5 | 1); }, true},
        {"second day of 2050", [](ByteVector& e) { Set16(e, 18, 70 << 9 | 1 << 5 | 2); }, false},
        {"second 60", [](ByteVector& e) { Set16(e, 14, 30); }, false},
        {"deleted, no dates", [](ByteVector& e) { e[0] = 0xE5, Set16(e, 18, 0); }, true},
        {"label", [](ByteVector& e) { e = Entry("MY.CARD    ", 0x08, 0, 0); }, true},
        {"label with a write time only",
         [](ByteVector& e) { e = Entry("CARD       ", 0x08, 0, 0), Set16(e, 16, 0); }, false},
        {"label with a cluster", [](ByteVector& e) { e = Entry("CARD       ", 0x08, 3, 0); },
         false},
        {"piece 18", [](ByteVector& e) { e = Piece(0x52, 0); }, true},
        {"piece 19", [](ByteVector& e) { e = Piece(0x53, 0); }, false},
        {"deleted piece", [](ByteVector& e) { e = Piece(0xE5, 0); }, true},
        {"piece with a cluster", [](ByteVector& e) { e = Piece(1, 0), e[26] = 1; }, false},
        {"dot without its neighbour", [](ByteVector& e) { e = Entry(".          ", 0x10, 5, 0); },
         false},
        {"dot pair",
         [](ByteVector& e) {
             e = Entry(".          ", 0x10, 5, 0) + Entry("..         ", 0x10, 0, 0);
         },
         true},
    };
    for (const EntryCase& one : cases) {
        ByteVector entry = Photo();
        one.change(entry);
        EXPECT_EQ(IsValidDirEntry(ByteView(std::span(entry))), one.expected) << one.name;
        for (std::size_t size = 0; size < 32; ++size) {
            EXPECT_FALSE(IsValidDirEntry(ByteView(entry.data(), size)))
                << one.name << " cut at " << size;
        }
    }
}

TEST(SectorValidators, DirectorySectorsAreJudgedAsAWhole)
{
    const std::uint8_t checksum = ShortNameChecksum(ByteView(std::span(Photo())));
    const ByteVector named = Piece(0x41, checksum) + Photo();
    ByteVector deleted = named;
    deleted[0] = deleted[32] = 0xE5;
    deleted[13] = 1;
    ByteVector repeated = Photo();
    std::copy_n(repeated.begin() + 1, 14, repeated.begin() + 17);
    const struct
    {
        const char* name;
        ByteVector sector;
        bool expected;
    } cases[] = {
        {"zeros", Padded({}), false},
        {"one entry", Padded(Photo()), true},
        {"entry behind a gap", Padded(Photo() + ByteVector(32) + Photo()), false},
        {"first byte zero, rest not", Padded(Photo() + ByteVector(31) + Bytes("01")), false},
        {"full", Padded(Photo() + named + named + named + named + named + named + named + Photo()),
         true},
        {"long name", Padded(named), true},
        {"checksum of another",
         Padded(Piece(0x41, static_cast<std::uint8_t>(checksum + 1)) + Photo()), false},
        {"pieces that differ", Padded(Piece(0x42, 1) + Piece(1, checksum) + Photo()), false},
        {"piece before a zero entry", Padded(Piece(0x41, checksum)), false},
        {"deleted chain escapes the checksum", Padded(deleted), true},
        {"inner blank", Padded(Entry("PHO TO  JPG", 0x20, 5, 9)), false},
        {"blank before the extension", Padded(Entry("PHOTO   J G", 0x20, 5, 9)), false},
        {"lone byte above 127", Padded(Entry("PH\x81TO   JPG", 0x20, 5, 9)), false},
        {"pair", Padded(Entry("PH\x81\x82O   JPG", 0x20, 5, 9)), true},
        {"lone byte above 127 at the end", Padded(Entry("PHOTO   JP\x81", 0x20, 5, 9)), true},
        {"repeats itself", Padded(repeated), false},
        {"dot entries", Padded(Entry(".          ", 0x10, 5, 0) + Entry("..         ", 0x10, 0, 0)),
         false},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(IsFatDirectorySector(ByteView(std::span(one.sector))), one.expected) << one.name;
    }
    EXPECT_TRUE(IsFatDotEntries(ByteView(std::span(cases[16].sector))));
}

TEST(SectorValidators, MftRecordsCarryTheirSizeAndSequence)
{
    ByteVector record = Padded(Bytes("'FILE'"), 2);
    Set16(record, 24, 0x400);
    Set16(record, 28, 0x400);
    Set16(record, 48, 0x1234);
    Set16(record, 510, 0x1234);
    EXPECT_TRUE(IsMftRecord(ByteView(std::span(record)), 1024));
    EXPECT_FALSE(IsMftRecord(ByteView(std::span(record)), 4096));
    EXPECT_FALSE(IsMftRecord(ByteView(record.data(), 511), 1024));
    for (const std::size_t offset :
         {std::size_t{0}, std::size_t{25}, std::size_t{28}, std::size_t{510}}) {
        ByteVector broken = record;
        broken[offset] ^= 0x08;
        EXPECT_FALSE(IsMftRecord(ByteView(std::span(broken)), 1024)) << offset;
    }
}

TEST(FatDateTime, CreationTimesCarryTheirTenths)
{
    const std::uint64_t base = FileTimeFromFat(Date2020, 0);
    EXPECT_EQ(base, 132366528000000000u);  // 2020-06-15
    EXPECT_EQ(FileTimeFromFatCreation(Date2020, 0, 57), base + 500'000);
    EXPECT_EQ(FileTimeFromFatCreation(Date2020, 0, 100), base + 1'000'000);
    EXPECT_EQ(FileTimeFromFatCreation(Date2020, 0, 157), base + 10'500'000);
    for (const int bad : {0, 40 << 9 | 2 << 5 | 30, 40 << 9 | 13 << 5 | 1}) {
        EXPECT_EQ(FileTimeFromFat(static_cast<std::uint16_t>(bad), 0), 0u) << bad;
    }
}

}  // namespace
