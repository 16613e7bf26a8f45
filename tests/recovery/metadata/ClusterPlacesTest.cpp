// Where a cluster lies, for clusters and sizes that no sound volume has: every asker keeps the arithmetic of its own.
#include "recovery/metadata/FatGeometry.h"
#include "recovery/metadata/FatVolume.h"
#include "recovery/metadata/NtfsVolume.h"

#include <gtest/gtest.h>

namespace {

TEST(ClusterPlacesTest, FatClustersLieWhereEachAskerAddsThemUp)
{
    constexpr std::uint64_t Base = 1000;
    constexpr std::uint64_t Wrap = std::uint64_t{1} << 32;
    const struct
    {
        std::uint32_t cluster;
        std::uint32_t dataStart;
        std::uint32_t sectorsPerCluster;
        std::uint64_t narrow;  // with a sum of 32 bits
        std::uint64_t wide;    // and of 64
    } places[] = {
        {2, 600, 8, 600, 600},
        {3, 600, 8, 608, 608},
        {0, 600, 8, 584, 584 + Wrap},
        {1, 600, 8, 592, 592 + Wrap},
        {0, 10, 8, Wrap - 6, Wrap - 6},
        // The product wraps for all, the sum only where it has 32 bits.
        {0x20000002, 600, 8, 600, 600},
        {0x1FFFFFFF, 600, 8, 576, 576 + Wrap},
        {0xFFFFFFFF, 0xFFFFFFFF, 128, Wrap - 385, 2 * Wrap - 385},
        {5, 600, 0, 600, 600},
    };
    for (const auto& place : places) {
        const FatVolume volume = {place.sectorsPerCluster, place.dataStart, Base};
        FatGeometry geometry;
        geometry.dataStart = place.dataStart;
        geometry.sectorsPerCluster = place.sectorsPerCluster;
        EXPECT_EQ(PlainClusterSector(volume, place.cluster), Base + place.narrow) << place.cluster;
        EXPECT_EQ(geometry.SectorOfCluster(place.cluster), place.wide) << place.cluster;
        EXPECT_EQ(geometry.SectorOfFolder(place.cluster), place.wide) << "FAT32";
        // Cluster 0 as a root directory before the data; before the base it wraps in 64 bits.
        const std::uint64_t root = std::uint64_t{place.dataStart} - 32;
        const bool isRoot = place.cluster == 0;
        geometry.isFat32 = false;
        EXPECT_EQ(geometry.SectorOfFolder(place.cluster), isRoot ? root : place.wide);
        EXPECT_EQ(ClusterSector(volume, place.cluster), Base + (isRoot ? root : place.narrow));
        // A record tells data start and base in one sum.
        EXPECT_EQ(
            SectorOfFatCluster({Base + place.dataStart, 0, place.sectorsPerCluster}, place.cluster),
            Base + (isRoot ? root : place.wide));
    }
}

TEST(ClusterPlacesTest, NtfsClustersWrapWhereTheirUnitDoes)
{
    EXPECT_EQ(SectorOfCluster(5, 4096, 512), 40u);
    EXPECT_EQ(SectorsToRun({1, -5}, 8), std::uint64_t{0} - 40);
    // Before the volume, rounded towards it.
    EXPECT_EQ(SectorOfCluster(~std::uint64_t{0}, 512 + 1, 512), ~std::uint64_t{0});
    // In bytes these are nothing any more.
    EXPECT_EQ(SectorOfCluster(std::uint64_t{1} << 57, 8, 1), std::uint64_t{1} << 60);
    EXPECT_EQ(SectorOfCluster(std::uint64_t{1} << 57, 4096, 512), 0u);
    // The size of records that have none.
    EXPECT_EQ(SectorOfCluster(3, 0xFFFFFFFF, 512), 25165823u);
}

}  // namespace
