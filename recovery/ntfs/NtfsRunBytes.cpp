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
    : source(sectorSource),
      nextSector(firstSector),
      sectorsLeft(sectorCount),
      sectorSize(bytesPerSector)
{
    const std::uint64_t total = source.totalSectors;
    if (firstSector > total || sectorCount > total - firstSector || sectorCount > LargestCount) {
        sectorsLeft = 0;
    }
}

// Reads on at the end of what is held. After a fault nothing more comes.
bool NtfsRunBytes::Append()
{
    const std::uint64_t piece = std::max<std::uint32_t>(1, PieceBytes / sectorSize);
    const auto count = static_cast<std::int32_t>(std::min(piece, sectorsLeft));
    if (count == 0) {
        return false;
    }
    const std::size_t before = held.size();
    held.resize(before + static_cast<std::size_t>(count) * sectorSize);
    std::int32_t sectorsRead = 0;
    const ResultCode result =
        source.ReadSectors(held.data() + before, count, nextSector,
                           static_cast<std::int32_t>(sectorSize), &sectorsRead);
    held.resize(before + static_cast<std::size_t>(sectorsRead) * sectorSize);
    nextSector += static_cast<std::uint64_t>(sectorsRead);
    sectorsLeft = result == ResultSuccess ? sectorsLeft - static_cast<std::uint64_t>(count) : 0;
    return sectorsRead > 0;
}

ByteView NtfsRunBytes::At(std::uint64_t position)
{
    while (position + LookAhead > begin + held.size()) {
        // What lies in front is of no use any more.
        const std::uint64_t passed = std::min<std::uint64_t>(position - begin, held.size());
        held.erase(held.begin(), held.begin() + static_cast<std::ptrdiff_t>(passed));
        begin += passed;
        if (!Append()) {
            break;
        }
    }
    return position >= begin ? ByteView(std::span<const std::uint8_t>(held)).Sub(position - begin)
                             : ByteView();
}

ByteView NtfsRunBytes::NextPiece()
{
    held.clear();
    (void)Append();  // nothing held tells it
    return ByteView(std::span<const std::uint8_t>(held));
}
