// The way up from a folder, as the ".." entries on disk tell it, for volumes of which nothing but the geometry is known.
#pragma once

#include "recovery/FolderChain.h"
#include "recovery/fat/FatVolumeList.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <unordered_map>

// Reads each folder once: what it says is a matter of the disk alone. Owned by one engine, which owns the source.
class FolderProbe
{
public:
    // endLba is the end of the target, rootCluster that of its boot volume.
    void Open(SectorSource& folderSource, std::int32_t bytesPerSector, std::uint64_t endLba);
    void Clear(std::uint32_t rootCluster);

    // Levels from cluster up to the root. A chain that breaks or closes on itself counts as far as it was walked.
    std::uint32_t CountDepth(const FatVolume& volume, std::uint32_t cluster);
    // The folder above; the root cluster where the folder does not tell. ResultInvalidParameter without a volume, for
    // cluster 0 and beyond the target, or the error of the read.
    [[nodiscard]] ResultCode
    FindParentCluster(const FatVolume& volume, std::uint32_t cluster, std::uint32_t* outParent);

private:
    // What the first 4096 bytes of a folder say.
    struct Head
    {
        ResultCode result = ResultSuccess;
        bool isLabel = false;  // begins with a volume label: a root directory
        bool hasDots = false;  // begins with dot entries
        std::uint32_t parent = 0;
    };

    const Head& HeadAt(std::uint64_t lba);

    SectorSource* m_source = nullptr;
    std::int32_t m_sectorSize = 512;
    std::uint64_t m_targetEnd = 0;
    std::uint32_t m_root = 2;
    std::unordered_map<std::uint64_t, Head> m_heads;
    // By cluster size and data start of the volume.
    std::unordered_map<std::uint64_t, KnownDepths> m_depths;
};
