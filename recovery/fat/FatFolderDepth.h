// How deep a folder lies below the root, told by the ".." entries on disk alone.
#pragma once

#include "recovery/FolderChain.h"
#include "recovery/metadata/FatGeometry.h"
#include "storage/SectorSource.h"

#include <cstdint>

// Reads each folder once: depth is a matter of the cluster and the disk. Owned by one engine.
class FatFolderDepth
{
public:
    void Open(SectorSource& folderSource, const FatGeometry& volume, std::uint64_t partitionStart);

    // The number of levels from cluster up to the root. A chain that breaks or closes on itself counts as far as it
    // was walked.
    std::uint32_t DepthOf(std::uint32_t cluster);

private:
    // What a folder's first sectors say of the way up.
    FolderStep StepFrom(std::uint32_t cluster);

    SectorSource* m_source = nullptr;
    FatGeometry m_geometry;
    std::uint64_t m_startLba = 0;
    KnownDepths m_depths;
};
