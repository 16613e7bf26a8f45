#include "recovery/ntfs/NtfsRunBytes.h"

#include <algorithm>

namespace {

constexpr std::uint32_t PieceBytes = 65536;
constexpr std::uint64_t LargestCount = INT32_MAX;  // of sectors in one read

}  // namespace

NtfsRunBytes::NtfsRunBytes(SectorSource& sectorSource,
                           std::uint64_t firstSector,
                           std::uint64_t sectorCount,
                           std::uint32_t bytesPerSector)
    : m_source(sectorSource),
      m_nextSector(firstSector),
      m_sectorsLeft(sectorCount),
      m_sectorSize(bytesPerSector)
{
    const std::uint64_t total = m_source.totalSectors;
    if (firstSector > total || sectorCount > total - firstSector || sectorCount > LargestCount) {
        m_sectorsLeft = 0;
    }
}

// Reads on at the end of what is held. After a fault nothing more comes.
bool NtfsRunBytes::Append()
{
    const std::uint64_t piece = std::max<std::uint32_t>(1, PieceBytes / m_sectorSize);
    const auto count = static_cast<std::int32_t>(std::min(piece, m_sectorsLeft));
    if (count == 0) {
        return false;
    }
    const std::size_t before = m_held.size();
    m_held.resize(before + static_cast<std::size_t>(count) * m_sectorSize);
    std::int32_t sectorsRead = 0;
    const ResultCode result =
        m_source.ReadSectors(m_held.data() + before, count, m_nextSector,
                             static_cast<std::int32_t>(m_sectorSize), &sectorsRead);
    m_held.resize(before + static_cast<std::size_t>(sectorsRead) * m_sectorSize);
    m_nextSector += static_cast<std::uint64_t>(sectorsRead);
    m_sectorsLeft = result == ResultSuccess ? m_sectorsLeft - static_cast<std::uint64_t>(count) : 0;
    return sectorsRead > 0;
}

ByteView NtfsRunBytes::At(std::uint64_t position)
{
    while (position + LookAhead > m_begin + m_held.size()) {
        // What lies in front is of no use any more.
        const std::uint64_t passed = std::min<std::uint64_t>(position - m_begin, m_held.size());
        m_held.erase(m_held.begin(), m_held.begin() + static_cast<std::ptrdiff_t>(passed));
        m_begin += passed;
        if (!Append()) {
            break;
        }
    }
    return position >= m_begin
               ? ByteView(std::span<const std::uint8_t>(m_held)).Sub(position - m_begin)
               : ByteView();
}

ByteView NtfsRunBytes::NextPiece()
{
    m_held.clear();
    (void)Append();  // nothing held tells it
    return ByteView(std::span<const std::uint8_t>(m_held));
}
