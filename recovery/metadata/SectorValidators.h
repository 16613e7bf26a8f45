// Pure tests that say, from the bytes of a sector or an entry alone and with no knowledge of any volume, whether
// it is NTFS or FAT metadata. All integers are little-endian. No test reads outside its view.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>

inline constexpr std::size_t DirEntryBytes = 32;
inline constexpr std::uint8_t DeletedMark = 0xE5;  // first byte of a deleted directory entry

// Offsets in a FAT directory entry.
inline constexpr std::size_t EntryAttributes = 11;
inline constexpr std::size_t EntryHighWord = 20;
inline constexpr std::size_t EntryLowWord = 26;
inline constexpr std::size_t EntrySize = 28;

inline constexpr std::uint8_t AttributeVolumeLabel = 0x08;
inline constexpr std::uint8_t AttributeFolder = 0x10;
inline constexpr std::uint8_t AttributeArchive = 0x20;
inline constexpr std::uint8_t AttributeLongName = 0x0F;  // the whole byte

// A FILE record whose allocated size equals recordBytes and whose first sector ends in its update sequence number.
bool IsMftRecord(ByteView sector, std::uint32_t recordBytes);
// The entry at the start is "." and the one after it "..", both folders without a size. No pair when the second
// does not lie in the view.
bool IsDotPair(ByteView entries);
// IsDotPair on a sector's first entry.
bool IsFatDotEntries(ByteView sector);
// Whether the 32 bytes at the start of the view may be a real directory entry. The view goes on to the end of
// the buffer: a "." entry is judged with its neighbour.
bool IsValidDirEntry(ByteView entries);
// Any of the 11 name bytes is one that a short name cannot hold. 0x80 and above pass.
bool IsBadShortName(ByteView entry);
// The view is one sector; every entry up to the first zero one is valid and consistent with its neighbours.
bool IsFatDirectorySector(ByteView sector);
// Over the 11 name bytes: rotate right by one, then add.
std::uint8_t ShortNameChecksum(ByteView entry);
