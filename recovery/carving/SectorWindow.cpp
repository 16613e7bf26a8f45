#include "recovery/carving/SectorWindow.h"

#include <algorithm>
#include <cstring>

namespace {

// Several measuring blocks, so that what is kept is moved to the front only now and then. Four sectors of 64 KiB,
// the largest request, fit twice.
constexpr std::size_t WindowBytes = std::size_t{512} * 1024;
constexpr std::uint64_t LargestAhead = 65536;
constexpr std::int32_t LargestSector = 65536;

}  // namespace

bool SectorWindow::Holds(std::uint64_t lba, std::uint64_t count) const
{
    return lba >= m_firstLba && lba - m_firstLba <= m_sectors &&
           count <= m_sectors - (lba - m_firstLba);
}

ByteView SectorWindow::View(std::uint64_t lba, std::uint64_t count) const
{
    return {m_buffer.data() + m_startOffset + (lba - m_firstLba) * m_sectorBytes,
            count * m_sectorBytes};
}

void SectorWindow::Adopt(const SectorSource& source, std::int32_t size)
{
    const auto bytes = static_cast<std::uint64_t>(size);
    if (m_contents != source.OpenNumber() || m_sectorBytes != bytes) {
        m_contents = source.OpenNumber();
        m_sectorBytes = bytes;
        m_firstLba = 0;
        m_sectors = 0;
    }
}

// Room for count more sectors after the last one. The sectors before keepFrom may be given up for it.
void SectorWindow::MakeRoom(std::uint64_t keepFrom, std::uint64_t count)
{
    if (m_startOffset + (m_sectors + count) * m_sectorBytes <= WindowBytes) {
        return;
    }
    const std::uint64_t dropped =
        std::min(m_sectors, keepFrom > m_firstLba ? keepFrom - m_firstLba : 0);
    m_sectors -= dropped;
    const std::uint64_t from = m_startOffset + dropped * m_sectorBytes;
    std::memmove(m_buffer.data(), m_buffer.data() + from, m_sectors * m_sectorBytes);
    m_firstLba += dropped;
    m_startOffset = 0;
}

// Reads the next count sectors; keeps those that arrived.
bool SectorWindow::Append(SectorSource& source, std::uint64_t count)
{
    std::int32_t got = 0;
    const ResultCode result =
        source.ReadSectors(m_buffer.data() + m_startOffset + m_sectors * m_sectorBytes,
                           static_cast<std::int32_t>(count), m_firstLba + m_sectors,
                           static_cast<std::int32_t>(m_sectorBytes), &got);
    m_sectors += static_cast<std::uint64_t>(got);
    return result == ResultSuccess;
}

ByteView SectorWindow::Read(SectorSource& source,
                            std::uint64_t lba,
                            std::int32_t sectorCount,
                            std::int32_t sectorSize)
{
    if (pinned) {
        return ReadAside(source, lba, sectorCount, sectorSize);
    }
    const auto count = static_cast<std::uint64_t>(sectorCount);
    if (sectorCount <= 0 || sectorSize <= 0 || sectorSize > LargestSector ||
        count * static_cast<std::uint64_t>(sectorSize) > WindowBytes / 2) {
        return {};
    }
    Adopt(source, sectorSize);
    if (Holds(lba, count)) {
        return View(lba, count);
    }
    m_buffer.resize(WindowBytes);
    const bool follows = m_sectors > 0 && lba >= m_firstLba && lba - m_firstLba <= m_sectors;
    if (!follows) {
        m_firstLba = lba;
        m_sectors = 0;
        m_startOffset = 0;
        return Append(source, count) ? View(lba, count) : ByteView();
    }
    const std::uint64_t end = m_firstLba + m_sectors;
    const std::uint64_t missing = lba + count - end;
    std::uint64_t ahead = std::min(LargestAhead / m_sectorBytes, m_sectors);
    const std::uint64_t behind = source.totalSectors > end ? source.totalSectors - end : 0;
    ahead = behind > missing ? std::min(ahead, behind - missing) : 0;
    // The sector in front is kept for the detectors that look back.
    MakeRoom(lba > m_firstLba ? lba - 1 : lba, missing + ahead);
    if (ahead > 0 && Append(source, missing + ahead)) {
        return View(lba, count);
    }
    if (!Holds(lba, count)) {
        // What was read ahead may have failed alone. Asked for again without it.
        (void)Append(source, lba + count - (m_firstLba + m_sectors));
    }
    return Holds(lba, count) ? View(lba, count) : ByteView();
}

ByteView SectorWindow::ReadAside(SectorSource& source,
                                 std::uint64_t lba,
                                 std::int32_t sectorCount,
                                 std::int32_t sectorSize)
{
    if (sectorCount <= 0 || sectorSize <= 0 || sectorSize > LargestSector ||
        sectorCount > static_cast<std::int32_t>(WindowBytes) / sectorSize) {
        return {};
    }
    const auto count = static_cast<std::uint64_t>(sectorCount);
    const auto bytes = static_cast<std::uint64_t>(sectorSize);
    if (m_contents == source.OpenNumber() && m_sectorBytes == bytes && Holds(lba, count)) {
        return View(lba, count);
    }
    m_aside.resize(std::max<std::size_t>(m_aside.size(), count * bytes));
    std::int32_t got = 0;
    const ResultCode result =
        source.ReadSectors(m_aside.data(), sectorCount, lba, sectorSize, &got);
    return result == ResultSuccess ? ByteView(m_aside.data(), count * bytes) : ByteView();
}
