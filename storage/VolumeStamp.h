// What tells whether a target has changed since it was scanned.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>

// A number drawn from the first megabyte of the volume that begins at a sector of a drive: boot sector with its serial
// number, tables, often the first folders. Another card in the same slot has another one, and nearly always a volume that
// was written to. 0 where it cannot be read.
std::uint64_t VolumeStamp(std::uint32_t diskNumber, std::uint64_t startLba);

// Last write time of an image file as a FILETIME.
[[nodiscard]] ResultCode ImageTime(const std::filesystem::path& imagePath,
                                   std::uint64_t* outFileTime);
