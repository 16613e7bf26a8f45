// Which file system a target holds, judged from its first 16 KB alone.
#pragma once

#include "platform/ByteView.h"

#include <cstddef>

enum class FileSystemKind
{
    Fat = 2,
    Ntfs = 3,
    Ext = 4,
    Unknown = 5
};

inline constexpr std::size_t RecognitionBytes = 16384;

// NTFS first, then FAT, then Ext.
FileSystemKind RecogniseFileSystem(ByteView start);

// The first 512 bytes are an NTFS boot sector. A cluster size of 128 sectors, or one given as a power, is not.
bool IsNtfsBootSector(ByteView sector);
// The first 512 bytes are a FAT12, FAT16 or FAT32 boot sector, and the volume is not encrypted as a whole.
bool IsFatBootSector(ByteView sector);
// The view begins at the superblock, byte 1024 of the target.
bool IsExtSuperblock(ByteView superblock);
