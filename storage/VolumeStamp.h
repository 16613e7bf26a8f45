// What tells whether a target has changed since it was scanned.
#pragma once

#include "storage/ScanSource.h"

#include <cstdint>
#include <filesystem>

// The free bytes of the volume in a range of a drive, which change with nearly everything that is written to it: of FAT and
// NTFS as its own tables count them, mounted or not, of another file system as its mount tells them. 0 where nothing
// does. As of the time when the source was opened.
std::uint64_t VolumeStamp(const ScanSource& drive);

// Last write time of an image file as a FILETIME.
[[nodiscard]] ResultCode ImageTime(const std::filesystem::path& imagePath,
                                   std::uint64_t* outFileTime);
