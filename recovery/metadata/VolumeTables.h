// The tables that say how full a FAT or NTFS volume is. Figures come from these, and a wrong one is worse than none: unlike the
// readers that engines use, which put up with whatever stands there, these take nothing that a sound volume would not hold.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// Where a volume's FAT lies and how much of it counts.
struct FatTableLayout
{
    std::uint64_t position = 0;  // bytes from the volume's start
    std::uint64_t clusters = 0;
    std::uint64_t clusterBytes = 0;
    unsigned entryBits = 0;  // 12, 16 or 32
};
std::optional<FatTableLayout> ReadFatTableLayout(ByteView bootSector);

// How many of the entries at the start of a piece are free. A piece begins at a whole entry.
std::uint64_t CountFreeEntries(ByteView piece, std::uint64_t entries, unsigned entryBits);

// Where a volume's FILE records lie.
struct NtfsTableLayout
{
    std::uint64_t clusterBytes = 0;
    std::uint64_t clusters = 0;
    std::uint64_t mftPosition = 0;  // bytes from the volume's start
    std::size_t recordBytes = 0;
};
std::optional<NtfsTableLayout> ReadNtfsTableLayout(ByteView bootSector);

// Puts the tails of a record's pieces of 512 bytes back. False, and nothing is known of the record then, when a tail is not
// what the update sequence says.
bool UndoFixups(std::span<std::uint8_t> record);

// A stretch of clusters, counted from the volume's start.
struct ClusterRun
{
    std::uint64_t firstCluster = 0;
    std::uint64_t clusters = 0;
};
// The runs of a repaired record's unnamed data. Nothing when there is none or when one does not lie in the volume.
std::optional<std::vector<ClusterRun>> FindDataRuns(ByteView record, std::uint64_t volumeClusters);

// The number of bits that are set among the first ones of a piece.
std::uint64_t CountUsedBits(ByteView piece, std::uint64_t bits);
