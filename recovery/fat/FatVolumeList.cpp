#include "recovery/fat/FatVolumeList.h"

#include <algorithm>

namespace {

constexpr std::size_t NoIndex = SIZE_MAX;

std::size_t SizeIndex(std::uint32_t sectorsPerCluster)
{
    const auto* found =
        std::find(std::begin(LegalClusterSizes), std::end(LegalClusterSizes), sectorsPerCluster);
    return static_cast<std::size_t>(found - std::begin(LegalClusterSizes));
}

}  // namespace

void FatVolumeList::Clear(std::uint64_t targetStart)
{
    m_volumes.clear();
    m_base = targetStart;
    for (std::size_t size = 0; size < SizeCount; ++size) {
        m_byStart[size].clear();
        m_byResidue[size].clear();
    }
    m_inferredByStart.clear();
}

void FatVolumeList::AppendBootVolume(const FatVolume& volume)
{
    m_volumes.push_back(volume);
    Index(m_volumes.size() - 1);
}

void FatVolumeList::Append(const FatVolume& volume)
{
    m_volumes.push_back(volume);
    Index(m_volumes.size() - 1);
    m_inferredByStart.try_emplace(volume.DataStart, m_volumes.size() - 1);
}

void FatVolumeList::Index(std::size_t index)
{
    const FatVolume& volume = m_volumes[index];
    const std::size_t size = SizeIndex(volume.SectorsPerCluster);
    if (size == SizeCount || !m_byStart[size].try_emplace(volume.DataStart, index).second) {
        return;
    }
    auto& starts = m_byResidue[size][volume.DataStart % volume.SectorsPerCluster];
    if (starts.empty() || volume.DataStart < starts.begin()->first) {
        starts.emplace(volume.DataStart, index);
    }
}

std::optional<std::size_t> FatVolumeList::FindExact(std::size_t size, std::uint32_t dataStart) const
{
    const auto found = m_byStart[size].find(dataStart);
    return found != m_byStart[size].end() ? std::optional(found->second) : std::nullopt;
}

std::optional<std::size_t> FatVolumeList::FindByCluster(std::uint64_t lba,
                                                        std::uint32_t cluster) const
{
    // For each cluster size there is one data start that puts the cluster there.
    const std::uint64_t offset = cluster != 0 ? lba - m_base : lba - m_base + FixedRootSectors;
    if (offset > UINT32_MAX) {
        return std::nullopt;
    }
    std::size_t first = NoIndex;
    for (std::size_t size = 0; size < SizeCount; ++size) {
        const std::uint32_t inFront =
            cluster != 0 ? FatClusterOffset(cluster, LegalClusterSizes[size]) : 0;
        const auto found = FindExact(size, static_cast<std::uint32_t>(offset) - inFront);
        first = std::min(first, found.value_or(NoIndex));
    }
    return first != NoIndex ? std::optional(first) : std::nullopt;
}

const FatVolume* FatVolumeList::FindHolding(std::uint64_t lba, std::uint32_t cluster) const
{
    std::size_t first = NoIndex;
    for (std::uint64_t back = 0; back < LegalClusterSizes[SizeCount - 1]; ++back) {
        // Volumes in which the cluster begins that many sectors before lba, and is long enough.
        const std::uint64_t sector = lba - back;
        const std::uint64_t offset =
            cluster != 0 ? sector - m_base : sector - m_base + FixedRootSectors;
        if (offset > UINT32_MAX) {
            continue;
        }
        for (std::size_t size = 0; size < SizeCount; ++size) {
            const std::uint32_t sectorsPerCluster = LegalClusterSizes[size];
            const std::uint32_t inFront =
                cluster != 0 ? FatClusterOffset(cluster, sectorsPerCluster) : 0;
            if (back < sectorsPerCluster) {
                const auto found = FindExact(size, static_cast<std::uint32_t>(offset) - inFront);
                first = std::min(first, found.value_or(NoIndex));
            }
        }
    }
    return first != NoIndex ? &m_volumes[first] : nullptr;
}

const FatVolume* FatVolumeList::FindAligned(std::uint64_t lba, std::uint32_t* outCluster) const
{
    const std::uint64_t offset = lba - m_base;
    std::size_t first = NoIndex;
    for (std::size_t size = 0; size < SizeCount; ++size) {
        const std::uint32_t sectorsPerCluster = LegalClusterSizes[size];
        const auto bucket =
            m_byResidue[size].find(static_cast<std::uint32_t>(offset % sectorsPerCluster));
        if (bucket != m_byResidue[size].end()) {
            const auto limit =
                static_cast<std::uint32_t>(std::min<std::uint64_t>(offset, UINT32_MAX));
            const auto behind = bucket->second.upper_bound(limit);
            if (behind != bucket->second.begin()) {
                first = std::min(first, std::prev(behind)->second);
            }
        }
        const std::uint64_t twoBehind = offset + 2 * std::uint64_t{sectorsPerCluster};
        if (twoBehind <= UINT32_MAX) {
            const auto found = FindExact(size, static_cast<std::uint32_t>(twoBehind));
            first = std::min(first, found.value_or(NoIndex));
        }
    }
    if (first == NoIndex) {
        return nullptr;
    }
    const FatVolume& volume = m_volumes[first];
    const auto distance = static_cast<std::int64_t>(offset - volume.DataStart);
    *outCluster = static_cast<std::uint32_t>(distance / std::int64_t{volume.SectorsPerCluster} + 2);
    return &volume;
}

const FatVolume* FatVolumeList::FindNearest(std::uint64_t lba) const
{
    if (m_volumes.size() <= 1) {
        return m_volumes.empty() ? nullptr : &m_volumes.front();
    }
    if (lba >= m_base) {
        const std::uint64_t offset = std::min<std::uint64_t>(lba - m_base, UINT32_MAX);
        const auto behind = m_inferredByStart.upper_bound(static_cast<std::uint32_t>(offset));
        if (behind != m_inferredByStart.begin()) {
            return &m_volumes[std::prev(behind)->second];
        }
    }
    return &m_volumes.front();
}
