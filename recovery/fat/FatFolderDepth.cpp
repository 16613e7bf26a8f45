#include "recovery/fat/FatFolderDepth.h"

#include "recovery/carving/SectorValidators.h"
#include "recovery/fat/FatEntryNames.h"

#include <array>
#include <unordered_set>
#include <vector>

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
    steps.clear();
    depths.clear();
}

FatFolderDepth::Step FatFolderDepth::StepFrom(std::uint32_t cluster)
{
    const auto [known, isNew] = steps.try_emplace(cluster);
    if (!isNew) {
        return known->second;
    }
    std::array<std::uint8_t, FolderHeadBytes> head = {};
    std::int32_t sectorsRead = 0;
    const ResultCode result = source->ReadSectors(
        head.data(), FolderHeadBytes / geometry.sectorSize,
        startLba + geometry.SectorOfFolder(cluster), geometry.sectorSize, &sectorsRead);
    const ByteView view(head);
    const bool isRoot =
        view.U8(EntryAttributes) == AttributeVolumeLabel || cluster == geometry.rootCluster;
    if (result == ResultSuccess && !isRoot && view.U8(0) == '.' &&
        view.Matches(DirEntryBytes, "..")) {
        known->second.isFolder = true;
        known->second.parent = FirstClusterOf(view.Sub(DirEntryBytes));
    }
    return known->second;
}

std::uint32_t FatFolderDepth::DepthOf(std::uint32_t cluster)
{
    std::vector<std::uint32_t> passed;
    std::unordered_set<std::uint32_t> met;
    std::uint32_t base = 0;
    for (std::uint32_t current = cluster;;) {
        if (const auto known = depths.find(current); known != depths.end()) {
            base = known->second;
            break;
        }
        met.insert(current);
        const Step step = StepFrom(current);
        if (!step.isFolder) {
            depths[current] = 0;
            break;
        }
        passed.push_back(current);
        // A chain that comes back to itself has another depth from each of its folders: none is kept.
        if (current == 0 || met.contains(step.parent)) {
            return static_cast<std::uint32_t>(passed.size());
        }
        current = step.parent;
    }
    for (auto folder = passed.rbegin(); folder != passed.rend(); ++folder) {
        depths[*folder] = ++base;
    }
    return base;
}
