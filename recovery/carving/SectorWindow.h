// The stretch of a source that the carver has in memory, so that measuring, and the detectors that look beyond
// their sector, do not read the same sectors again and again. A read through it fails exactly where reading from
// the source would fail.
#pragma once

#include "platform/ByteView.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <vector>

// One per carver. Not thread-safe.
class SectorWindow
{
public:
    // sectorCount sectors from lba; empty when reading them fails. Valid until the next call of Read or ReadAside.
    // Reads ahead when it is asked for what follows, never further than it has read so far.
    ByteView Read(SectorSource& source,
                  std::uint64_t lba,
                  std::int32_t sectorCount,
                  std::int32_t sectorSize);
    // The same, but what Read gave out stays valid.
    ByteView ReadAside(SectorSource& source,
                       std::uint64_t lba,
                       std::int32_t sectorCount,
                       std::int32_t sectorSize);

    // While it is pinned, Read works as ReadAside.
    bool pinned = false;

private:
    bool Holds(std::uint64_t lba, std::uint64_t count) const;
    ByteView View(std::uint64_t lba, std::uint64_t count) const;
    void Adopt(const SectorSource& source, std::int32_t size);
    void MakeRoom(std::uint64_t keepFrom, std::uint64_t count);
    bool Append(SectorSource& source, std::uint64_t count);

    std::vector<std::uint8_t> m_buffer;
    std::vector<std::uint8_t> m_aside;
    std::uint64_t m_contents = 0;  // which opened source; 0 for none
    std::uint64_t m_sectorBytes = 0;
    std::uint64_t m_firstLba = 0;
    std::uint64_t m_sectors = 0;
    std::uint64_t m_startOffset = 0;  // of firstLba in the buffer, bytes
};
