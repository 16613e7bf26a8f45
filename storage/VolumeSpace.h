// How full a FAT or NTFS volume is, counted from its own tables: nothing needs to be mounted for it.
#pragma once

#include "storage/ByteReader.h"

#include <cstdint>

struct VolumeSpace
{
    std::uint64_t totalBytes = 0;  // of all clusters
    std::uint64_t freeBytes = 0;
};

// The volume in a range of a source. False when it is neither FAT12, FAT16, FAT32 nor NTFS, when its tables make no sense,
// or when they cannot be read; outSpace is untouched then. Reads the whole FAT, or the whole cluster bitmap.
bool ReadVolumeSpace(IByteReader& reader,
                     std::uint64_t startByte,
                     std::uint64_t byteCount,
                     VolumeSpace& outSpace);
