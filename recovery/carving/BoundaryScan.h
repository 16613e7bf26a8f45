// Where a running file must end: at the next sector that begins a known kind of file or is file-system metadata.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>

// NTFS records, indexes and logs, and FAT directory sectors. The first sector of a FAT directory ("." and "..") and
// boot sectors are none.
bool IsFileSystemMetadataSector(ByteView sector);

// Walks the whole sectors of a block, moving the context's currentLba on before each. True at the first boundary,
// whose offset is added to inOutLength then.
bool ScanBlockForBoundary(ByteView block, std::int64_t& inOutLength);
// The same, but the head of a program stream is none: such a stream is full of them.
bool ScanBlockForBoundaryMpeg(ByteView block, std::int64_t& inOutLength);
