#include "recovery/fat/UsedClusterMap.h"

#include <algorithm>
#include <bit>

namespace {

constexpr std::uint64_t WordBits = 64;

}  // namespace

void UsedClusterMap::Mark(std::uint64_t bit)
{
    if (bit < m_keptBits) {
        m_words[bit / WordBits] |= std::uint64_t{1} << bit % WordBits;
    }
}

ResultCode UsedClusterMap::Build(FatTable& table,
                                 const FatGeometry& geometry,
                                 std::uint64_t partitionSectors,
                                 const WorkReport& report)
{
    m_sectorCount = partitionSectors;
    m_dataStart = geometry.dataStart;
    m_sectorsPerCluster = geometry.sectorsPerCluster;
    // In 32 bits: without a 32-bit total this is nearly 2^32 / sectorsPerCluster, and what lies after the FAT is read
    // as entries too.
    std::uint32_t clusters = (geometry.totalSectors32 - m_dataStart) / m_sectorsPerCluster;
    if (geometry.totalSectors32 % m_sectorsPerCluster != 0) {
        ++clusters;
    }
    const std::uint64_t mapBytes = clusters >> 3;
    m_mapBits = mapBytes * 8;
    m_keptBits = std::min(m_mapBits, m_sectorCount / m_sectorsPerCluster + 1);
    m_words.assign((m_keptBits + WordBits - 1) / WordBits, 0);
    bool ended = false;
    const auto mark = [&](std::uint32_t cluster, std::uint32_t entry) {
        Mark(std::uint64_t{cluster} - 2);
        if (table.IsEndMark(entry)) {
            return true;
        }
        const std::uint32_t pointer = geometry.isFat32 ? entry : entry & 0xFFFF;
        const std::uint32_t bit = pointer - 2;
        ended = (bit >> 3) >= mapBytes;
        if (!ended) {
            Mark(bit);
        }
        return !ended;
    };
    // After the first round the same entries come again: their pointers are marked, and their own bits lie out of every
    // position's reach, as long as all could be read and the partition is not that large.
    const std::uint64_t round = table.EntriesInRound();
    const std::uint64_t first = std::min<std::uint64_t>(clusters, round);
    const ResultCode result = table.ForEachUsedEntry(2, first, report, mark);
    const bool isKnown = m_keptBits + 2 <= round && !table.ReadsFailed();
    if (result != ResultSuccess || ended || clusters <= round || isKnown) {
        return result;
    }
    return table.ForEachUsedEntry(round, clusters, report, mark);
}

std::uint64_t UsedClusterMap::FindBit(std::uint64_t from, bool marked) const
{
    const std::uint64_t flip = marked ? 0 : ~std::uint64_t{0};
    for (std::uint64_t word = from / WordBits; word < m_words.size(); ++word) {
        std::uint64_t bits = m_words[word] ^ flip;
        if (word == from / WordBits) {
            bits &= ~std::uint64_t{0} << from % WordBits;
        }
        if (bits != 0) {
            const std::uint64_t found =
                word * WordBits + static_cast<std::uint64_t>(std::countr_zero(bits));
            return found < m_keptBits ? found : m_mapBits;
        }
    }
    return m_mapBits;
}

void UsedClusterMap::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength) const
{
    outLength = 0;
    if (inOutSector > m_sectorCount) {
        inOutSector = m_sectorCount;
        return;
    }
    if (inOutSector != 0) {
        inOutSector -=
            m_dataStart;  // before the data area this wraps to a place that nothing reaches
    }
    const std::uint64_t position = inOutSector / m_sectorsPerCluster;
    if (position < m_mapBits) {
        const std::uint64_t free = FindBit(position, false);
        if (free < m_mapBits) {
            inOutSector += (free - position) * m_sectorsPerCluster;
            outLength = (FindBit(free, true) - free) * m_sectorsPerCluster;
        }
    }
    if (inOutSector > m_sectorCount || outLength > m_sectorCount - inOutSector) {
        outLength = inOutSector < m_sectorCount ? m_sectorCount - inOutSector : 0;
    }
    inOutSector += m_dataStart;
}
