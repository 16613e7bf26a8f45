// Directory sectors that fit no volume yet. They wait in memory: as the continuation of a name that a later sector breaks
// off, or for the end of the pass.
#pragma once

#include "platform/ByteView.h"
#include "recovery/fat/NameCarries.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

struct StoredSector
{
    bool Used = false;  // joined to a name
    std::vector<std::uint8_t> Buffer;
};

class StoredSectorMap
{
public:
    using Map = std::map<std::uint64_t, StoredSector>;

    void Clear();
    // A second sector at the same LBA replaces the first.
    void Store(std::uint64_t lba, ByteView sector);
    // The bytes of the first sector, by LBA, not used yet that goes on with the carry; it counts as used then. Null
    // when there is none. Valid until Clear.
    const std::vector<std::uint8_t>* TakeContinuation(const NameCarry& carry);

    const Map& Sectors() const { return m_sectors; }

private:
    using ByChecksum = std::map<std::uint8_t, std::set<std::uint64_t>>;

    // Where a sector is found by its first entry: as a piece, as a live short entry, or (a deleted one) never.
    std::set<std::uint64_t>* IndexOf(ByteView sector);
    std::optional<std::uint64_t> FindPiece(const NameCarry& carry) const;

    Map m_sectors;
    ByChecksum m_pieces;
    ByChecksum m_shortEntries;
};
