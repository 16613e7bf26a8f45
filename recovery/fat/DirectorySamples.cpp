#include "recovery/fat/DirectorySamples.h"

#include <algorithm>
#include <bit>

namespace {

constexpr std::uint64_t ProductLimit = std::uint64_t{1} << 31;

// Whether a sample can be a part of any pair with this cluster size: clusters 0 and 1 have no place, and products from
// 2^31 on turn negative where the pair is checked.
bool CanPair(const DirectorySample& sample, std::uint32_t sectorsPerCluster)
{
    return sample.Cluster >= 2 &&
           (std::uint64_t{sample.Cluster} - 2) * sectorsPerCluster < ProductLimit;
}

std::uint64_t RisingKey(const DirectorySample& sample, std::uint32_t sectorsPerCluster)
{
    return sample.Lba - std::uint64_t{sample.Cluster} * sectorsPerCluster;
}

std::uint64_t FallingKey(const DirectorySample& sample, std::uint32_t sectorsPerCluster)
{
    return sample.Lba + std::uint64_t{sample.Cluster} * sectorsPerCluster;
}

}  // namespace

std::optional<FatVolume> TryVolume(std::uint32_t clusterHigh,
                                   std::uint64_t lbaHigh,
                                   std::uint32_t clusterLow,
                                   std::uint64_t lbaLow,
                                   std::uint64_t base)
{
    const std::uint32_t clusters = clusterHigh - clusterLow;
    if (clusters == 0 || (lbaHigh - lbaLow) % clusters != 0) {
        return std::nullopt;
    }
    const std::uint64_t sectorsPerCluster = (lbaHigh - lbaLow) / clusters;
    if (sectorsPerCluster > 128 || !std::has_single_bit(sectorsPerCluster)) {
        return std::nullopt;
    }
    const std::uint64_t inFront = static_cast<std::uint32_t>(clusterLow - 2) * sectorsPerCluster;
    const auto start = static_cast<std::int64_t>(lbaLow - inFront);
    // The other product is taken in 32 bits and sign extended, so volumes beyond 2^31 sectors are refused.
    const auto product = static_cast<std::int32_t>(
        FatClusterOffset(clusterHigh, static_cast<std::uint32_t>(sectorsPerCluster)));
    const auto check =
        static_cast<std::int64_t>(lbaHigh - static_cast<std::uint64_t>(std::int64_t{product}));
    if (start < 0 || check != start) {
        return std::nullopt;
    }
    FatVolume volume;
    volume.SectorsPerCluster = static_cast<std::uint32_t>(sectorsPerCluster);
    volume.DataStart = static_cast<std::uint32_t>(start) - static_cast<std::uint32_t>(base);
    volume.Base = base;
    return volume;
}

void DirectorySampleList::Clear()
{
    m_samples.clear();
    for (std::size_t size = 0; size < SizeCount; ++size) {
        m_rising[size].clear();
        m_falling[size].clear();
    }
}

void DirectorySampleList::Append(const DirectorySample& sample)
{
    const std::size_t index = m_samples.size();
    m_samples.push_back(sample);
    for (std::size_t size = 0; size < SizeCount; ++size) {
        const std::uint32_t sectorsPerCluster = LegalClusterSizes[size];
        if (!CanPair(sample, sectorsPerCluster)) {
            continue;
        }
        const auto [pair, isNew] = m_rising[size].try_emplace(RisingKey(sample, sectorsPerCluster));
        if (isNew) {
            pair->second.first = index;
        } else if (pair->second.second == SIZE_MAX &&
                   m_samples[pair->second.first].Cluster != sample.Cluster) {
            pair->second.second = index;
        }
        // A pair is legal up to a certain sum of its clusters, so an older sample with a lower cluster stands for
        // every younger one with a higher.
        Falling& chain = m_falling[size][FallingKey(sample, sectorsPerCluster)];
        if (chain.empty() || sample.Cluster < chain.begin()->first) {
            chain.emplace(sample.Cluster, index);
        }
    }
}

// The larger cluster lies at the higher address, as on a real volume: start and size come out right.
void DirectorySampleList::FindRising(const DirectorySample& sample,
                                     std::size_t size,
                                     std::size_t* inOutOldest) const
{
    const std::uint64_t key = RisingKey(sample, LegalClusterSizes[size]);
    const auto found = m_rising[size].find(key);
    // All pairs of one key give the same start, which must not lie before the disk.
    const bool startsOnDisk =
        static_cast<std::int64_t>(key + 2 * std::uint64_t{LegalClusterSizes[size]}) >= 0;
    if (found == m_rising[size].end() || !startsOnDisk) {
        return;
    }
    const bool firstDiffers = m_samples[found->second.first].Cluster != sample.Cluster;
    *inOutOldest =
        std::min(*inOutOldest, firstDiffers ? found->second.first : found->second.second);
}

// The larger cluster lies at the lower address: the arithmetic is done as if it did not.
void DirectorySampleList::FindFalling(const DirectorySample& sample,
                                      std::size_t size,
                                      std::size_t* inOutOldest) const
{
    const std::uint64_t sectorsPerCluster = LegalClusterSizes[size];
    const auto found = m_falling[size].find(FallingKey(sample, LegalClusterSizes[size]));
    if (found == m_falling[size].end()) {
        return;
    }
    // start = key - (sum of both clusters - 2) x size, which must not be negative.
    const std::uint64_t largestSum = found->first / sectorsPerCluster + 2;
    if (largestSum < sample.Cluster) {
        return;
    }
    const auto limit = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(largestSum - sample.Cluster, UINT32_MAX));
    const auto behind = found->second.upper_bound(limit);
    for (auto at = behind; at != found->second.begin();) {
        --at;
        if (at->first != sample.Cluster) {
            *inOutOldest = std::min(*inOutOldest, at->second);
            return;
        }
    }
}

std::optional<FatVolume> DirectorySampleList::DeriveVolume(const DirectorySample& sample,
                                                           std::uint64_t base) const
{
    std::size_t oldest = SIZE_MAX;
    for (std::size_t size = 0; size < SizeCount; ++size) {
        if (CanPair(sample, LegalClusterSizes[size])) {
            FindRising(sample, size, &oldest);
            FindFalling(sample, size, &oldest);
        }
    }
    if (oldest == SIZE_MAX) {
        return std::nullopt;
    }
    const DirectorySample& other = m_samples[oldest];
    return TryVolume(std::max(sample.Cluster, other.Cluster), std::max(sample.Lba, other.Lba),
                     std::min(sample.Cluster, other.Cluster), std::min(sample.Lba, other.Lba),
                     base);
}
