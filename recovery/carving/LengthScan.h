// The skeleton of all length functions that scan: block after block from the sector after the head, to the next
// boundary, the budget, an unreadable block or a cancel.
#pragma once

#include "recovery/carving/BoundaryScan.h"
#include "recovery/carving/ByteSearch.h"

#include <cstdint>

// for (LengthScan scan(Budget); scan.NextBlock();) { look for the format's own end in scan.Block() }
class LengthScan
{
public:
    using BoundaryFunction = bool (*)(ByteView block, std::int64_t& inOutLength);

    static constexpr std::size_t BlockBytes = 65536;

    // The budget does not count the head sector.
    explicit LengthScan(std::int64_t budgetBytes,
                        BoundaryFunction findBoundary = ScanBlockForBoundary);
    LengthScan(const LengthScan&) = delete;
    LengthScan& operator=(const LengthScan&) = delete;
    ~LengthScan();

    // Reads the next block, reports progress and looks for a boundary. False when there is no further block to look
    // at. Only whole blocks are read: near the source's end the last one fails as a whole.
    bool NextBlock();

    // The bytes that were read.
    ByteView Block() const { return m_block; }
    // What end marks are searched in: BlockBytes bytes, also when fewer came. The tail then holds what earlier
    // reads left.
    const SearchBlock& Searched() const { return m_searched; }
    // Bytes before the block, the head sector included.
    std::int64_t Scanned() const { return m_scanned; }
    // As far as the file goes by what is known: before the block, or to the boundary in it.
    std::int64_t Length() const { return m_length; }
    // The format's own end; overrides a boundary in the same block.
    void StopAt(std::int64_t newLength)
    {
        m_length = newLength;
        m_stopped = true;
    }

private:
    bool ReadBlock(std::int64_t sectorCount);
    bool Report() const;

    BoundaryFunction m_boundary;
    std::int64_t m_sectorSize;
    std::int64_t m_length;
    std::int64_t m_scanned;
    std::int64_t m_budget;           // sectors
    std::int64_t m_sectorsRead = 0;  // after the head
    bool m_stopped = false;
    ByteView m_block;
    SearchBlock m_searched;
};
