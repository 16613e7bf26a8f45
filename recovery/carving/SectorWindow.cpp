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
    return lba >= firstLba && lba - firstLba <= sectors && count <= sectors - (lba - firstLba);
}

ByteView SectorWindow::View(std::uint64_t lba, std::uint64_t count) const
{
    return {buffer.data() + startOffset + (lba - firstLba) * sectorBytes, count * sectorBytes};
}

void SectorWindow::Adopt(const SectorSource& source, std::int32_t size)
{
    const auto bytes = static_cast<std::uint64_t>(size);
    if (contents != source.OpenNumber() || sectorBytes != bytes) {
        contents = source.OpenNumber();
        sectorBytes = bytes;
        firstLba = 0;
        sectors = 0;
    }
}

// Room for count more sectors behind the last one. The sectors before keepFrom may be given up for it.
void SectorWindow::MakeRoom(std::uint64_t keepFrom, std::uint64_t count)
{
    if (startOffset + (sectors + count) * sectorBytes <= WindowBytes) {
        return;
    }
    const std::uint64_t dropped = std::min(sectors, keepFrom > firstLba ? keepFrom - firstLba : 0);
    sectors -= dropped;
    const std::uint64_t from = startOffset + dropped * sectorBytes;
    std::memmove(buffer.data(), buffer.data() + from, sectors * sectorBytes);
    firstLba += dropped;
    startOffset = 0;
}

// Reads the next count sectors; keeps those that arrived.
bool SectorWindow::Append(SectorSource& source, std::uint64_t count)
{
    std::int32_t got = 0;
    const ResultCode result = source.ReadSectors(
        buffer.data() + startOffset + sectors * sectorBytes, static_cast<std::int32_t>(count),
        firstLba + sectors, static_cast<std::int32_t>(sectorBytes), &got);
    sectors += static_cast<std::uint64_t>(got);
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
    buffer.resize(WindowBytes);
    const bool follows = sectors > 0 && lba >= firstLba && lba - firstLba <= sectors;
    if (!follows) {
        firstLba = lba;
        sectors = 0;
        startOffset = 0;
        return Append(source, count) ? View(lba, count) : ByteView();
    }
    const std::uint64_t end = firstLba + sectors;
    const std::uint64_t missing = lba + count - end;
    std::uint64_t ahead = std::min(LargestAhead / sectorBytes, sectors);
    const std::uint64_t behind = source.totalSectors > end ? source.totalSectors - end : 0;
    ahead = behind > missing ? std::min(ahead, behind - missing) : 0;
    // The sector in front is kept for the detectors that look back.
    MakeRoom(lba > firstLba ? lba - 1 : lba, missing + ahead);
    if (ahead > 0 && Append(source, missing + ahead)) {
        return View(lba, count);
    }
    if (!Holds(lba, count)) {
        // What was read ahead may have failed alone. Asked for again without it.
        (void)Append(source, lba + count - (firstLba + sectors));
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
    if (contents == source.OpenNumber() && sectorBytes == bytes && Holds(lba, count)) {
        return View(lba, count);
    }
    aside.resize(std::max<std::size_t>(aside.size(), count * bytes));
    std::int32_t got = 0;
    const ResultCode result = source.ReadSectors(aside.data(), sectorCount, lba, sectorSize, &got);
    return result == ResultSuccess ? ByteView(aside.data(), count * bytes) : ByteView();
}
