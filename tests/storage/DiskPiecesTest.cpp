#include "storage/DiskPieces.h"

#include "storage/SectorRanges.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr std::uint32_t SectorSize = 512;
constexpr std::uint64_t DiskSectors = 100000;

VolumeRecord Partition(std::uint64_t start, std::uint64_t count, const char* fileSystem = "")
{
    VolumeRecord volume;
    volume.PartitionNumber = 1;
    volume.StartSector = start * SectorSize;
    volume.SectorCount = count * SectorSize;
    volume.FileSystemName = fileSystem;
    return volume;
}

// Start and length of each, gaps in brackets.
std::string Cut(std::vector<VolumeRecord> volumes)
{
    std::string text;
    for (const VolumeRecord& piece :
         PiecesOf(std::move(volumes), DiskSectors * SectorSize, SectorSize)) {
        const std::string range =
            std::to_string(piece.StartSector) + "+" + std::to_string(piece.SectorCount);
        text +=
            (text.empty() ? "" : " ") + (piece.PartitionNumber == 0 ? "[" + range + "]" : range);
    }
    return text;
}

struct Case
{
    const char* name;
    std::vector<VolumeRecord> volumes;
    const char* pieces;
};

class DiskPieces : public testing::TestWithParam<Case>
{};

TEST_P(DiskPieces, AreAsTheTableSaysWhereItMakesSense)
{
    EXPECT_EQ(Cut(GetParam().volumes), GetParam().pieces);
}

INSTANTIATE_TEST_SUITE_P(
    Tables,
    DiskPieces,
    testing::Values(
        Case{"InAnyOrder",
             {Partition(50000, 100), Partition(2048, 1000)},
             "[0+2048] 2048+1000 [3048+46952] 50000+100 [50100+49900]"},
        Case{"SmallRestsAreNothing",
             {Partition(31, 1000), Partition(1062, 98907)},
             "31+1000 1062+98907"},
        Case{"BehindTheEnd",
             {Partition(99000, 50000), Partition(200000, 5)},
             "[0+99000] 99000+1000"},
        Case{"TooSmall", {Partition(5000, 31)}, "[0+100000]"},
        Case{"TheSameTwice",
             {Partition(5000, 100), Partition(5000, 95000, "FAT"), Partition(5000, 100)},
             "[0+5000] 5000+95000"},
        // The second is known for what it is; the third is not, and what it has alone is a gap.
        Case{"OneInAnother",
             {Partition(0, 60000), Partition(1000, 2000, "NTFS"), Partition(50000, 20000)},
             "0+60000 1000+2000 [60000+40000]"}),
    [](const auto& one) { return std::string(one.param.name); });

TEST(DiskPiecesRandom, NothingIsLeftOutAndNothingIsReadMoreThanTwice)
{
    std::mt19937_64 dice(7);
    for (int round = 0; round < 500; ++round) {
        std::vector<VolumeRecord> volumes;
        for (std::uint64_t i = dice() % 256; i != 0; --i) {
            volumes.push_back(Partition(dice() % (DiskSectors * 2), dice() % DiskSectors,
                                        dice() % 2 == 0 ? "FAT" : ""));
        }
        std::uint64_t sum = 0;
        SectorRanges covered;
        char16_t number = 0;
        for (const VolumeRecord& piece :
             PiecesOf(std::move(volumes), DiskSectors * SectorSize, SectorSize)) {
            ASSERT_LE(piece.StartSector + piece.SectorCount, DiskSectors);
            ASSERT_GE(piece.SectorCount * SectorSize, SmallestPieceBytes);
            ASSERT_EQ(piece.Letter, ++number);
            covered.Add(piece.StartSector, piece.SectorCount);
            sum += piece.SectorCount;
        }
        ASSERT_LE(sum, 2 * DiskSectors);
        std::uint64_t at = 0;
        for (const auto& [first, end] : covered.Ends()) {
            ASSERT_LT((first - at) * SectorSize, SmallestPieceBytes);
            at = end;
        }
        ASSERT_LT((DiskSectors - at) * SectorSize, SmallestPieceBytes);
    }
}

}  // namespace
