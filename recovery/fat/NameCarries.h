// Long names that a sector broke off: their pieces wait for the sector that goes on with them.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

// The unfinished tail of a directory buffer.
struct NameCarry
{
    std::uint8_t Checksum = 0;            // of the long name pieces; 0: there is no carry
    std::uint32_t SectorsPerCluster = 0;  // of the volume; 0 when unknown
    std::uint32_t BaseLow = 0;
    std::uint32_t DataStart = 0;
    std::uint32_t Cluster = 0;        // the directory's
    std::uint64_t Lba = 0;            // sector of the buffer
    std::vector<std::uint8_t> Bytes;  // entries from the first piece to the buffer's end
};

// Carries in order of arrival.
class NameCarryList
{
public:
    void Clear();
    void Add(NameCarry carry);
    // Removes and gives the first carry that a sector goes on with: by the checksum of its first entry, or, when that
    // is a deleted one without pieces, by its distance after the carry's sector.
    std::optional<NameCarry> Take(ByteView sector, std::uint64_t lba);

private:
    std::optional<std::uint64_t> FindByChecksum(std::uint8_t checksum) const;
    std::optional<std::uint64_t> FindByDistance(std::uint64_t lba) const;

    std::map<std::uint64_t, NameCarry> m_carries;  // by number of arrival
    std::uint64_t m_nextNumber = 0;
    std::map<std::uint8_t, std::set<std::uint64_t>> m_byChecksum;
    std::set<std::pair<std::uint64_t, std::uint64_t>>
        m_byLba;  // Lba and number; those with a volume
};
