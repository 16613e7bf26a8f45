// Whether a path lies on a target. For this room alone.
#pragma once

#include "session/ScanTarget.h"
#include "storage/PathTouches.h"

// Writing to the path would write onto the target.
Touching PathTouchesTarget(const std::filesystem::path& path, const ScanTarget& target);
// Bytes per sector of a disk; 512 for an unknown one.
std::uint32_t SectorSizeOfDisk(std::uint32_t diskNumber);
// A whole disk up to its last sector: its row in the list counts whole cylinders. What is a part of a disk stays as it is.
ScanTarget UpToTheLastSector(const ScanTarget& target);
