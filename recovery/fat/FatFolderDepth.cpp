#include "recovery/fat/FatFolderDepth.h"

#include "recovery/metadata/FatEntryNames.h"
#include "recovery/metadata/SectorValidators.h"

#include <array>

namespace {

constexpr std::int32_t FolderHeadBytes = 4096;

}  // namespace

void FatFolderDepth::Open(SectorSource& folderSource,
                          const FatGeometry& volume,
                          std::uint64_t partitionStart)
{
    m_source = &folderSource;
    m_geometry = volume;
    m_startLba = partitionStart;
    m_depths.clear();
}

FolderStep FatFolderDepth::StepFrom(std::uint32_t cluster)
{
    std::array<std::uint8_t, FolderHeadBytes> head = {};
    std::int32_t sectorsRead = 0;
    const ResultCode result = m_source->ReadSectors(
        head.data(), FolderHeadBytes / m_geometry.sectorSize,
        m_startLba + m_geometry.SectorOfFolder(cluster), m_geometry.sectorSize, &sectorsRead);
    const ByteView view(head);
    const bool isRoot =
        view.U8(EntryAttributes) == AttributeVolumeLabel || cluster == m_geometry.rootCluster;
    FolderStep step;
    step.isLevel = result == ResultSuccess && !isRoot && view.U8(0) == '.' &&
                   view.Matches(DirEntryBytes, "..");
    step.hasParent = cluster != 0;
    step.parent = FirstClusterOf(view.Sub(DirEntryBytes));
    return step;
}

std::uint32_t FatFolderDepth::DepthOf(std::uint32_t cluster)
{
    return CountLevels(cluster, m_depths,
                       [this](std::uint32_t current) { return StepFrom(current); });
}
