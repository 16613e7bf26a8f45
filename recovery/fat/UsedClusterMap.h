// Which clusters a FAT volume uses, as its first FAT tells it, and the free stretches between them.
#pragma once

#include "recovery/fat/FatTable.h"

#include <cstdint>
#include <vector>

// Bit (c - 2) stands for cluster c. Only bits that a position inside the partition can reach are kept in memory; a
// wrong total makes the map as a whole up to 512 MiB long.
class UsedClusterMap
{
public:
    // Walks the table. An entry that points outside the map stops the walk: all after it counts as free. 0, or what
    // report answered.
    [[nodiscard]] ResultCode Build(FatTable& table,
                                   const FatGeometry& geometry,
                                   std::uint64_t partitionSectors,
                                   const WorkReport& report);

    // Moves inOutSector, relative to the partition start, to the next free cluster and measures the free stretch from
    // there; length 0 when there is none. dataStart is taken off a position that is not 0 and added to every answer,
    // so that the last stretch can run past the partition by that much.
    void NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength) const;

private:
    void Mark(std::uint64_t bit);
    // The first bit from here on that is (or is not) marked; the map's end when there is none.
    std::uint64_t FindBit(std::uint64_t from, bool marked) const;

    std::vector<std::uint64_t> m_words;
    std::uint64_t m_keptBits = 0;  // in words
    std::uint64_t m_mapBits = 0;   // of the map as a whole; a multiple of 8
    std::uint64_t m_sectorCount = 0;
    std::uint32_t m_dataStart = 0;
    std::uint32_t m_sectorsPerCluster = 1;
};
