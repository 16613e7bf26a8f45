// Where a cluster lies, for clusters and sizes that no sound volume has: every asker keeps the arithmetic of its own.
#include "recovery/metadata/FatGeometry.h"
#include "recovery/metadata/FatVolume.h"
#include "recovery/metadata/NtfsVolume.h"

#include <gtest/gtest.h>

namespace {

struct FatPlace
{
    std::uint32_t cluster;
    std::uint32_t dataStart;
    std::uint32_t sectorsPerCluster;
    // With a sum of 32 bits and of 64; cluster 0 as a root directory and without one.
    std::uint64_t rootIn32;
    std::uint64_t plainIn32;
    std::uint64_t rootWide;
    std::uint64_t plainWide;
};

TEST(ClusterPlacesTest, FatClustersLieWhereEachAskerAddsThemUp)
{
    constexpr std::uint64_t Base = 1000;
    constexpr std::uint64_t Wrap = std::uint64_t{1} << 32;
    const FatPlace places[] = {
        {2, 600, 8, 600, 600, 600, 600},
        {3, 600, 8, 608, 608, 608, 608},
        {0, 600, 8, 568, 584, 568, 584 + Wrap},
        {1, 600, 8, 592, 592, 592 + Wrap, 592 + Wrap},
        // In front of the base: the root wraps in 64 bits, the clusters in 32.
        {0, 10, 8, 10 - std::uint64_t{32}, Wrap - 6, 10 - std::uint64_t{32}, Wrap - 6},
        // The product of 2^32 and more wraps for all, the sum only where it has 32 bits.
        {0x20000002, 600, 8, 600, 600, 600, 600},
        {0x1FFFFFFF, 600, 8, 576, 576, 576 + Wrap, 576 + Wrap},
        {0xFFFFFFFF, 0xFFFFFFFF, 128, Wrap - 385, Wrap - 385, 2 * Wrap - 385, 2 * Wrap - 385},
        {5, 600, 0, 600, 600, 600, 600},
    };
    for (const FatPlace& place : places) {
        const FatVolume volume = {place.sectorsPerCluster, place.dataStart, Base};
        FatGeometry geometry;
        geometry.dataStart = place.dataStart;
        geometry.sectorsPerCluster = place.sectorsPerCluster;
        EXPECT_EQ(ClusterSector(volume, place.cluster), Base + place.rootIn32) << place.cluster;
        EXPECT_EQ(PlainClusterSector(volume, place.cluster), Base + place.plainIn32);
        EXPECT_EQ(geometry.SectorOfCluster(place.cluster), place.plainWide) << place.cluster;
        EXPECT_EQ(geometry.SectorOfFolder(place.cluster), place.plainWide) << "FAT32";
        geometry.isFat32 = false;
        EXPECT_EQ(geometry.SectorOfFolder(place.cluster), place.rootWide) << place.cluster;
        // A record tells data start and base in one sum.
        EXPECT_EQ(SectorOfFatCluster({Base + place.dataStart, 0, place.sectorsPerCluster},
                                     place.cluster),
                  Base + place.rootWide);
    }
}

TEST(ClusterPlacesTest, NtfsClustersWrapWhereTheirUnitDoes)
{
    EXPECT_EQ(SectorOfCluster(5, 4096, 512), 40u);
    EXPECT_EQ(SectorOfCluster(5, 8, 1), 40u);
    // In front of the volume, rounded towards it.
    EXPECT_EQ(SectorOfCluster(~std::uint64_t{0}, 512 + 1, 512), ~std::uint64_t{0});
    EXPECT_EQ(SectorsToRun({1, -5}, 8), std::uint64_t{0} - 40);
    // 2^61 clusters of 8 sectors: nothing is left of them in bytes nor in sectors, 2^57 clusters have their sectors.
    EXPECT_EQ(SectorOfCluster(std::uint64_t{1} << 61, 8, 1), 0u);
    EXPECT_EQ(SectorOfCluster(std::uint64_t{1} << 57, 8, 1), std::uint64_t{1} << 60);
    EXPECT_EQ(SectorOfCluster(std::uint64_t{1} << 57, 4096, 512), 0u);
    // The size of records that have none.
    EXPECT_EQ(SectorOfCluster(3, 0xFFFFFFFF, 512), 25165823u);
}

}  // namespace
