// Where things lie on a FAT volume, as the boot sector tells it.
#pragma once

#include "platform/ByteView.h"
#include "platform/ResultCode.h"
#include "recovery/metadata/FatClusters.h"

#include <cstdint>

struct FatGeometry
{
    std::int32_t sectorSize = 512;  // bytes
    std::uint32_t sectorsPerCluster = 1;
    std::uint32_t dataStart = 0;        // sectors from the partition start to cluster 2
    std::uint32_t reservedSectors = 0;  // before the first FAT
    std::uint32_t rootCluster = 0;      // FAT32; 0 on FAT12 and FAT16
    std::uint32_t totalSectors32 = 0;   // the 32-bit total; the 16-bit one is not looked at
    bool isFat32 = true;

    // Sectors from the partition start to a cluster; clusters 0 and 1 lie out of every disk's reach.
    std::uint64_t SectorOfCluster(std::uint32_t cluster) const
    {
        return SectorOfFatCluster(
            {.dataStart = dataStart, .sectorsPerCluster = sectorsPerCluster, .zeroIsRoot = false},
            cluster);
    }
    // The same for a folder: cluster 0 of a volume without a root cluster is its root directory.
    std::uint64_t SectorOfFolder(std::uint32_t cluster) const
    {
        return SectorOfFatCluster({.dataStart = dataStart,
                                   .sectorsPerCluster = sectorsPerCluster,
                                   .zeroIsRoot = !isFat32},
                                  cluster);
    }
    std::uint32_t ClusterBytes() const
    {
        return sectorsPerCluster * static_cast<std::uint32_t>(sectorSize);
    }
};

// Reads the geometry from a boot sector. ResultInvalidParameter, and nothing written, when its sector size is no
// multiple of 512 or its cluster size is 0.
[[nodiscard]] ResultCode ReadFatGeometry(ByteView bootSector, FatGeometry& outGeometry);
