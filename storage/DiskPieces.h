// What a table of partitions cuts a disk or an image into: its partitions, and all that lies between them.
#pragma once

#include "storage/VolumeRecord.h"

#include <cstdint>
#include <vector>

// What is smaller holds no file system, and no file worth a name: it is left out.
inline constexpr std::uint64_t SmallestPieceBytes = 16384;

// Volumes are those of a table, in bytes, in any order, and may say anything: what comes back are pieces in sectors inside the
// disk, by their start, with Letter counted from 1. Nothing of the disk is in none of them but what is too small, and all of
// them together are at most twice as large as the disk: of partitions that overlap only those in which a file system was
// recognised stay, and one of those that begin in the same place.
std::vector<VolumeRecord>
PiecesOf(std::vector<VolumeRecord> volumes, std::uint64_t diskBytes, std::uint32_t sectorSize);
