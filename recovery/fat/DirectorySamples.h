// Directory starts whose volume is not known yet. Two directories on one volume fix its geometry, because both lie at a
// whole number of clusters from the data area.
#pragma once

#include "recovery/fat/FatVolumeList.h"

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

struct DirectorySample
{
    std::uint32_t Cluster = 0;
    std::uint64_t Lba = 0;
};

// The geometry that two directories fix, the larger and the smaller cluster and LBA sorted apart; none when they give
// no legal cluster size or a start before the disk. base is the target's first LBA.
std::optional<FatVolume> TryVolume(std::uint32_t clusterHigh,
                                   std::uint64_t lbaHigh,
                                   std::uint32_t clusterLow,
                                   std::uint64_t lbaLow,
                                   std::uint64_t base);

// Samples in order of arrival, found by the pairs that they make.
class DirectorySampleList
{
public:
    void Clear();
    void Append(const DirectorySample& sample);
    // The volume that the oldest sample which makes a legal pair with this one fixes.
    std::optional<FatVolume> DeriveVolume(const DirectorySample& sample, std::uint64_t base) const;

private:
    static constexpr std::size_t SizeCount = std::size(LegalClusterSizes);

    // Samples whose Lba - s x Cluster agree: the oldest, and the oldest of another cluster.
    struct RisingPair
    {
        std::size_t first = 0;
        std::size_t second = SIZE_MAX;
    };
    // Samples whose Lba + s x Cluster agree, by cluster; see the source for which are kept.
    using Falling = std::map<std::uint32_t, std::size_t>;

    void
    FindRising(const DirectorySample& sample, std::size_t size, std::size_t* inOutOldest) const;
    void
    FindFalling(const DirectorySample& sample, std::size_t size, std::size_t* inOutOldest) const;

    std::vector<DirectorySample> m_samples;
    std::unordered_map<std::uint64_t, RisingPair> m_rising[SizeCount];
    std::unordered_map<std::uint64_t, Falling> m_falling[SizeCount];
};
