#include "recovery/fat/FolderProbe.h"

#include "recovery/metadata/FatEntryNames.h"
#include "recovery/metadata/SectorValidators.h"

#include <array>

namespace {

constexpr std::int32_t HeadBytes = 4096;

}  // namespace

void FolderProbe::Open(SectorSource& folderSource,
                       std::int32_t bytesPerSector,
                       std::uint64_t endLba)
{
    m_source = &folderSource;
    m_sectorSize = bytesPerSector;
    m_targetEnd = endLba;
}

void FolderProbe::Clear(std::uint32_t rootCluster)
{
    m_root = rootCluster;
    m_heads.clear();
    m_depths.clear();
}

const FolderProbe::Head& FolderProbe::HeadAt(std::uint64_t lba)
{
    const auto [known, isNew] = m_heads.try_emplace(lba);
    Head& head = known->second;
    if (isNew) {
        std::array<std::uint8_t, HeadBytes> bytes = {};
        std::int32_t sectorsRead = 0;
        head.result = m_source->ReadSectors(bytes.data(), HeadBytes / m_sectorSize, lba,
                                            m_sectorSize, &sectorsRead);
        const ByteView view(bytes);
        head.isLabel = view.U8(EntryAttributes) == AttributeVolumeLabel;
        head.hasDots = view.U8(0) == '.' && view.Matches(DirEntryBytes, "..");
        head.parent = FirstClusterOf(view.Sub(DirEntryBytes));
    }
    return head;
}

ResultCode FolderProbe::FindParentCluster(const FatVolume& volume,
                                          std::uint32_t cluster,
                                          std::uint32_t* outParent)
{
    const std::uint64_t lba = ClusterSector(volume, cluster);
    if (!volume.IsKnown() || cluster == 0 || lba > m_targetEnd) {
        return ResultInvalidParameter;
    }
    const Head& head = HeadAt(lba);
    if (head.result != ResultSuccess) {
        return head.result;
    }
    const bool tells = !head.isLabel && head.hasDots && head.parent != 0;
    *outParent = tells ? head.parent : m_root;
    return ResultSuccess;
}

std::uint32_t FolderProbe::CountDepth(const FatVolume& volume, std::uint32_t cluster)
{
    if (!volume.IsKnown() || cluster == 0) {
        return 0;
    }
    KnownDepths& known = m_depths[std::uint64_t{volume.SectorsPerCluster} << 32 | volume.DataStart];
    return CountLevels(cluster, known, [&](std::uint32_t current) {
        const Head& head = HeadAt(ClusterSector(volume, current));
        FolderStep step;
        step.isLevel = head.result == ResultSuccess && !head.isLabel && current != m_root;
        step.hasParent = head.hasDots && head.parent != 0;
        step.parent = head.parent;
        return step;
    });
}
