#include "recovery/fat/FatFolderDepth.h"

#include "recovery/carving/SectorValidators.h"
#include "recovery/fat/FatEntryNames.h"

#include <array>

namespace {

constexpr std::int32_t FolderHeadBytes = 4096;

}  // namespace

void FatFolderDepth::Open(SectorSource& folderSource,
                          const FatGeometry& volume,
                          std::uint64_t partitionStart)
{
    source = &folderSource;
    geometry = volume;
    startLba = partitionStart;
    depths.clear();
}

FolderStep FatFolderDepth::StepFrom(std::uint32_t cluster)
{
    std::array<std::uint8_t, FolderHeadBytes> head = {};
    std::int32_t sectorsRead = 0;
    const ResultCode result = source->ReadSectors(
        head.data(), FolderHeadBytes / geometry.sectorSize,
        startLba + geometry.SectorOfFolder(cluster), geometry.sectorSize, &sectorsRead);
    const ByteView view(head);
    const bool isRoot =
        view.U8(EntryAttributes) == AttributeVolumeLabel || cluster == geometry.rootCluster;
    FolderStep step;
    step.isLevel = result == ResultSuccess && !isRoot && view.U8(0) == '.' &&
                   view.Matches(DirEntryBytes, "..");
    step.hasParent = cluster != 0;
    step.parent = FirstClusterOf(view.Sub(DirEntryBytes));
    return step;
}

std::uint32_t FatFolderDepth::DepthOf(std::uint32_t cluster)
{
    return CountLevels(cluster, depths,
                       [this](std::uint32_t current) { return StepFrom(current); });
}
