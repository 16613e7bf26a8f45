// The geometry that a disk is given here: made up, since no disk has one any more.
#pragma once

#include <cstdint>

inline constexpr std::uint64_t GeometryHeads = 255;
inline constexpr std::uint64_t GeometrySectorsPerTrack = 63;
inline constexpr std::uint64_t GeometryCylinderSectors = GeometryHeads * GeometrySectorsPerTrack;

// The sectors of all whole cylinders of a disk; all its sectors when it has less than one cylinder.
constexpr std::uint64_t GeometrySectors(std::uint64_t diskSectors)
{
    const std::uint64_t whole = diskSectors / GeometryCylinderSectors * GeometryCylinderSectors;
    return whole != 0 ? whole : diskSectors;
}
