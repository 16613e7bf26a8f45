// What is asked of the copies that this thread makes, and what they met. Engines hand a copy to one another without knowing
// of it; where there is none, a copy is what it always was.
#pragma once

#include "storage/SectorSource.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

// In force as long as it lives; one inside of another takes its place meanwhile.
class CopyScope
{
public:
    explicit CopyScope(bool fillsUnreadable);
    CopyScope(const CopyScope&) = delete;
    CopyScope& operator=(const CopyScope&) = delete;
    ~CopyScope();

    // Bytes of the files written that are zeros in place of what could not be read.
    std::uint64_t FilledBytes() const { return m_filledBytes; }

    // For the copy loop and its readers alone. Null when there is none.
    static CopyScope* Current();
    bool FillsUnreadable() const { return m_fillsUnreadable; }
    void BeginPiece() { m_holes.clear(); }
    void AddHole(std::size_t start, std::size_t count) { m_holes.emplace_back(start, count); }
    // So many bytes of the piece went into the file.
    void TakePiece(std::size_t count);

private:
    CopyScope* m_outer;
    bool m_fillsUnreadable;
    std::uint64_t m_filledBytes = 0;
    std::vector<std::pair<std::size_t, std::size_t>> m_holes;  // start and length, in the piece
};

// Reads the sectors of a piece, as SectorSource does. In a scope that fills, a sector that cannot be read comes as zeros;
// what lies past the source's end is no such sector.
[[nodiscard]] ResultCode ReadForCopy(SectorSource& source,
                                     std::uint8_t* buffer,
                                     std::int32_t sectorCount,
                                     std::uint64_t lba,
                                     std::int32_t sectorSize,
                                     std::int32_t* outSectorsRead);
