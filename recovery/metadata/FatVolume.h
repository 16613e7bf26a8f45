// A FAT volume as read from a boot sector or inferred from where directories lie.
#pragma once

#include "recovery/metadata/FatClusters.h"

#include <cstdint>

// The cluster sizes that a volume can have, in sectors.
inline constexpr std::uint32_t LegalClusterSizes[] = {1, 2, 4, 8, 16, 32, 64, 128};

struct FatVolume
{
    std::uint32_t SectorsPerCluster = 0;  // 0: no volume known
    std::uint32_t DataStart = 0;          // sectors from Base to cluster 2
    std::uint64_t Base = 0;  // the target's first LBA, also of a lost partition's volume

    bool IsKnown() const { return SectorsPerCluster != 0; }
    friend bool operator==(const FatVolume&, const FatVolume&) = default;
};

// The LBA of a cluster; cluster 0 is the root directory before the data.
inline std::uint64_t ClusterSector(const FatVolume& volume, std::uint32_t cluster)
{
    return SectorOfFatCluster({.base = volume.Base,
                               .dataStart = volume.DataStart,
                               .sectorsPerCluster = volume.SectorsPerCluster,
                               .sumIn32Bits = true},
                              cluster);
}
// The same, but cluster 0 is no root: it lies two clusters before cluster 2.
inline std::uint64_t PlainClusterSector(const FatVolume& volume, std::uint32_t cluster)
{
    return SectorOfFatCluster({.base = volume.Base,
                               .dataStart = volume.DataStart,
                               .sectorsPerCluster = volume.SectorsPerCluster,
                               .zeroIsRoot = false,
                               .sumIn32Bits = true},
                              cluster);
}
