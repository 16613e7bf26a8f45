#include "recovery/fat/StoredSectors.h"

#include "recovery/metadata/SectorValidators.h"

#include <algorithm>

void StoredSectorMap::Clear()
{
    m_sectors.clear();
    m_pieces.clear();
    m_shortEntries.clear();
}

std::set<std::uint64_t>* StoredSectorMap::IndexOf(ByteView sector)
{
    if (sector.U8(EntryAttributes) == AttributeLongName) {
        return &m_pieces[sector.U8(13)];
    }
    return sector.U8(0) != DeletedMark ? &m_shortEntries[ShortNameChecksum(sector)] : nullptr;
}

void StoredSectorMap::Store(std::uint64_t lba, ByteView sector)
{
    StoredSector& stored = m_sectors[lba];
    if (!stored.Buffer.empty()) {
        if (std::set<std::uint64_t>* old = IndexOf(ByteView(stored.Buffer))) {
            old->erase(lba);
        }
    }
    stored.Used = false;
    stored.Buffer.assign(sector.Span().begin(), sector.Span().end());
    if (std::set<std::uint64_t>* index = IndexOf(sector)) {
        index->insert(lba);
    }
}

// A piece fits by its checksum; with a known volume it also has to lie in the carry's cluster.
std::optional<std::uint64_t> StoredSectorMap::FindPiece(const NameCarry& carry) const
{
    const auto found = m_pieces.find(carry.Checksum);
    if (found == m_pieces.end() || found->second.empty()) {
        return std::nullopt;
    }
    if (carry.SectorsPerCluster == 0) {
        return *found->second.begin();
    }
    const std::uint64_t first = std::uint64_t{carry.BaseLow} + carry.DataStart +
                                (std::uint64_t{carry.Cluster} - 2) * carry.SectorsPerCluster;
    const auto at = found->second.lower_bound(first);
    return at != found->second.end() && *at - first < carry.SectorsPerCluster ? std::optional(*at)
                                                                              : std::nullopt;
}

const std::vector<std::uint8_t>* StoredSectorMap::TakeContinuation(const NameCarry& carry)
{
    std::optional<std::uint64_t> lba = FindPiece(carry);
    const auto entries = m_shortEntries.find(carry.Checksum);
    if (entries != m_shortEntries.end() && !entries->second.empty()) {
        lba = std::min(lba.value_or(UINT64_MAX), *entries->second.begin());
    }
    if (!lba) {
        return nullptr;
    }
    StoredSector& stored = m_sectors.at(*lba);
    stored.Used = true;
    if (std::set<std::uint64_t>* index = IndexOf(ByteView(stored.Buffer))) {
        index->erase(*lba);
    }
    return &stored.Buffer;
}
