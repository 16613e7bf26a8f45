// Which clusters an NTFS volume uses, as its bitmap file says, and the free stretches between them.
#pragma once

#include "recovery/WorkReport.h"
#include "recovery/ntfs/NtfsReaders.h"

#include <cstdint>
#include <vector>

class NtfsClusterMap
{
public:
    // Reads record 6 and its data. An error of the record stands and leaves the map as it was; what cannot be read of
    // the data counts as free. ResultOutOfMemory, and no map, when the data claims more than the source holds.
    // Otherwise what report answered.
    [[nodiscard]] ResultCode Build(NtfsReaders& readers,
                                   const NtfsVolume& volume,
                                   SectorSource& source,
                                   const WorkReport& report);

    // Moves inOutSector, relative to the volume, to the next free cluster, keeping its place inside the cluster, and
    // measures the free stretch from there; length 0 when there is none.
    void NextFreeRange(const NtfsVolume& volume,
                       std::uint64_t& inOutSector,
                       std::uint64_t& outLength) const;

private:
    [[nodiscard]] ResultCode Fill(const RunList& runs,
                                  const NtfsVolume& volume,
                                  SectorSource& source,
                                  const WorkReport& report);
    // The first bit from here on that is (or is not) set; the map's end when there is none.
    std::uint64_t FindBit(std::uint64_t from, bool set) const;
    std::uint64_t Bits() const { return m_bitmapSize * 8; }

    std::uint64_t m_bitmapSize = 0;       // bytes
    std::vector<std::uint64_t> m_bitmap;  // little-endian: bit i of word w is cluster 64 w + i
};
