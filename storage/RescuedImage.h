// An image that a rescue has made, or is still making: the map beside it tells what of the disk is not in it. Such areas
// cannot be read here either; the holes in their place are no zeros of the disk.
#pragma once

#include "storage/ByteReader.h"
#include "storage/RescueMap.h"
#include "storage/SectorRanges.h"

#include <filesystem>
#include <memory>
#include <optional>

// "disk.img.map" beside "disk.img".
std::filesystem::path RescueMapFileOf(const std::filesystem::path& image);
// Nothing when the file is not there or is no map.
std::optional<RescueMap> ReadRescueMap(const std::filesystem::path& file);
// What the map beside an image calls not read, in sectors of that size; a sector of which a part is missing is missing.
// Empty without a map.
SectorRanges MissingSectorsOf(const std::filesystem::path& image, std::uint32_t sectorSize);

// Reads up to the next missing sector and fails there with ResultReadFault.
std::unique_ptr<IByteReader> MakeMissingReader(std::unique_ptr<IByteReader> image,
                                               std::shared_ptr<const SectorRanges> missing,
                                               std::uint32_t sectorSize);
