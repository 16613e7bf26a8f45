// Where a FAT cluster lies: the one place that computes it.
#pragma once

#include <cstdint>

// Sectors that the root directory of a FAT12 or FAT16 volume is taken to have, whatever the boot sector says.
inline constexpr std::uint32_t FixedRootSectors = 32;

// Sectors from cluster 2 to a cluster, always in 32 bits: before it, and from 2^32 sectors on, this wraps.
inline constexpr std::uint32_t FatClusterOffset(std::uint32_t cluster,
                                                std::uint32_t sectorsPerCluster)
{
    return (cluster - 2) * sectorsPerCluster;
}

// The data area that clusters are counted in. What cluster 0 means, and how wide the last sum is, differ between those who
// ask; both decide where a wild cluster number leads, and so what is found.
struct FatDataArea
{
    std::uint64_t base = 0;       // of the volume, an LBA; 0 for an answer relative to it
    std::uint64_t dataStart = 0;  // sectors from base to cluster 2
    std::uint32_t sectorsPerCluster = 1;
    // Cluster 0 is the root directory before the data area.
    bool zeroIsRoot = true;
    // Data start and offset are added in 32 bits, so cluster 1 lies in reach.
    bool sumIn32Bits = false;
};

inline constexpr std::uint64_t SectorOfFatCluster(const FatDataArea& area, std::uint32_t cluster)
{
    if (cluster == 0 && area.zeroIsRoot) {
        return area.base + area.dataStart - FixedRootSectors;
    }
    const std::uint64_t sector = area.dataStart + FatClusterOffset(cluster, area.sectorsPerCluster);
    return area.base + (area.sumIn32Bits ? static_cast<std::uint32_t>(sector) : sector);
}
