// What tells whether a target has changed since it was scanned.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>

// Free space in bytes of the volume that begins at a sector of a drive; 0 where it cannot be told. A volume that was
// written to has another one.
std::uint64_t VolumeStamp(std::uint32_t diskNumber, std::uint64_t startLba);

// Last write time of an image file as a FILETIME.
[[nodiscard]] ResultCode ImageTime(const std::filesystem::path& imagePath,
                                   std::uint64_t* outFileTime);
