// The searches among the FAT volumes of a target.
#pragma once

#include "recovery/metadata/FatVolume.h"

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

// All volumes of a target in order of discovery. Base is the same in all of them. The first match in that order wins in
// every search; volumes that repeat an earlier one count but are never found.
class FatVolumeList
{
public:
    void Clear(std::uint64_t targetStart);
    void AppendBootVolume(const FatVolume& volume);
    void Append(const FatVolume& volume);

    bool Empty() const { return m_volumes.empty(); }
    std::size_t Count() const { return m_volumes.size(); }
    const FatVolume& At(std::size_t index) const { return m_volumes[index]; }

    // The index of the first volume in which the cluster lies exactly at lba.
    std::optional<std::size_t> FindByCluster(std::uint64_t lba, std::uint32_t cluster) const;
    // The first volume in which lba lies inside the cluster.
    const FatVolume* FindHolding(std::uint64_t lba, std::uint32_t cluster) const;
    // The first volume for which lba begins a cluster after its start, or lies exactly two clusters before it.
    const FatVolume* FindAligned(std::uint64_t lba, std::uint32_t* outCluster) const;
    // The only volume; else the one that starts nearest before lba, the boot volume left out; else the first.
    const FatVolume* FindNearest(std::uint64_t lba) const;

private:
    static constexpr std::size_t SizeCount = std::size(LegalClusterSizes);

    std::optional<std::size_t> FindExact(std::size_t size, std::uint32_t dataStart) const;
    void Index(std::size_t index);

    std::vector<FatVolume> m_volumes;
    std::uint64_t m_base = 0;
    // By cluster size: DataStart to the first volume with it.
    std::unordered_map<std::uint32_t, std::size_t> m_byStart[SizeCount];
    // By cluster size and DataStart modulo it: DataStart to volume, only those that no earlier one with a lower start
    // makes unreachable. The later the volume, the lower its start.
    std::unordered_map<std::uint32_t, std::map<std::uint32_t, std::size_t>> m_byResidue[SizeCount];
    std::map<std::uint32_t, std::size_t> m_inferredByStart;  // without the boot volume
};
