#include "recovery/fat/NameCarries.h"

#include "recovery/metadata/SectorValidators.h"

#include <algorithm>

namespace {

constexpr std::uint64_t LargestClusterSectors = 128;

}  // namespace

void NameCarryList::Clear()
{
    m_carries.clear();
    m_byChecksum.clear();
    m_byLba.clear();
}

void NameCarryList::Add(NameCarry carry)
{
    const std::uint64_t number = m_nextNumber++;
    m_byChecksum[carry.Checksum].insert(number);
    if (carry.SectorsPerCluster != 0) {
        m_byLba.emplace(carry.Lba, number);
    }
    m_carries.emplace(number, std::move(carry));
}

std::optional<std::uint64_t> NameCarryList::FindByChecksum(std::uint8_t checksum) const
{
    const auto found = m_byChecksum.find(checksum);
    return found != m_byChecksum.end() && !found->second.empty()
               ? std::optional(*found->second.begin())
               : std::nullopt;
}

// The distance is unsigned: a carry whose sector was moved ahead of this one is far away.
std::optional<std::uint64_t> NameCarryList::FindByDistance(std::uint64_t lba) const
{
    std::optional<std::uint64_t> first;
    const std::uint64_t lowest = lba >= LargestClusterSectors ? lba - LargestClusterSectors : 0;
    for (auto at = m_byLba.lower_bound({lowest, 0}); at != m_byLba.end() && at->first <= lba;
         ++at) {
        const bool isNear = lba - at->first < m_carries.at(at->second).SectorsPerCluster;
        if (isNear && (!first || at->second < *first)) {
            first = at->second;
        }
    }
    return first;
}

std::optional<NameCarry> NameCarryList::Take(ByteView sector, std::uint64_t lba)
{
    std::optional<std::uint64_t> number;
    if (sector.U8(EntryAttributes) == AttributeLongName) {
        number = FindByChecksum(sector.U8(13));
    } else if (sector.U8(0) == DeletedMark) {
        number = FindByDistance(lba);
    } else {
        number = FindByChecksum(ShortNameChecksum(sector));
    }
    if (!number) {
        return std::nullopt;
    }
    auto node = m_carries.extract(*number);
    NameCarry carry = std::move(node.mapped());
    m_byChecksum[carry.Checksum].erase(*number);
    m_byLba.erase({carry.Lba, *number});
    return carry;
}
