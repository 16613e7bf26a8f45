// The bytes of one run, as if it had been read whole, in bounded memory: a run may claim 2^54 bytes.
#pragma once

#include "platform/ByteView.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <vector>

// Positions must not decrease. A run that does not lie wholly in the source has no bytes; at a bad sector the bytes end.
class NtfsRunBytes
{
public:
    NtfsRunBytes(SectorSource& sectorSource,
                 std::uint64_t firstSector,
                 std::uint64_t sectorCount,
                 std::uint32_t bytesPerSector);

    // From a position on, at least LookAhead bytes while so many arrived.
    ByteView At(std::uint64_t position);
    // The next piece as it comes, for reading from end to end; empty when no more arrives. Not to be mixed with At.
    ByteView NextPiece();

    static constexpr std::size_t LookAhead = 64;

private:
    bool Append();

    SectorSource& m_source;
    std::uint64_t m_nextSector;
    std::uint64_t m_sectorsLeft;
    std::uint32_t m_sectorSize;
    std::uint64_t m_begin = 0;  // of what is held, in the run
    std::vector<std::uint8_t> m_held;
};
