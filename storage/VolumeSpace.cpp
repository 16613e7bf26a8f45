#include "storage/VolumeSpace.h"

#include "recovery/metadata/BootSectors.h"
#include "recovery/metadata/NtfsAttributes.h"
#include "recovery/metadata/VolumeTables.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace {

constexpr std::size_t PieceBytes = std::size_t{1} << 20;

using Bytes = std::vector<std::uint8_t>;

// The part of a source that a volume stands in; nothing outside of it is read.
class VolumeRange
{
public:
    VolumeRange(IByteReader& source, std::uint64_t startByte, std::uint64_t byteCount)
        : m_reader(source), m_start(startByte), m_count(byteCount)
    {
    }

    bool Read(std::uint64_t position, Bytes& outBytes, std::size_t size) const
    {
        outBytes.resize(size);
        return position <= m_count && size <= m_count - position &&
               ReadWhole(m_reader, m_start + position, outBytes.data(), size) == ResultSuccess;
    }

private:
    IByteReader& m_reader;
    std::uint64_t m_start;
    std::uint64_t m_count;
};

// One piece of a FAT holds whole entries of every width: its size is a multiple of 3 and 4.
constexpr std::size_t FatPieceBytes = PieceBytes / 12 * 12;

bool ReadFatSpace(const VolumeRange& volume, ByteView boot, VolumeSpace& outSpace)
{
    const std::optional<FatTableLayout> table = ReadFatTableLayout(boot);
    if (!table) {
        return false;
    }
    const std::uint64_t entries = table->clusters + 2;
    const std::uint64_t tableBytes = (entries * table->entryBits + 7) / 8;
    const std::uint64_t entriesAPiece = FatPieceBytes * 8 / table->entryBits;
    std::uint64_t free = 0;
    std::uint64_t done = 0;
    Bytes piece;
    for (std::uint64_t at = 0; at < tableBytes; at += FatPieceBytes) {
        const std::size_t size = std::min<std::uint64_t>(FatPieceBytes, tableBytes - at);
        if (!volume.Read(table->position + at, piece, size)) {
            return false;
        }
        const std::uint64_t count = std::min(entriesAPiece, entries - done);
        free += CountFreeEntries(ByteView(piece.data(), piece.size()), count, table->entryBits);
        done += count;
    }
    // The first two entries are never free in a sound table, and no clusters in any.
    Bytes start;
    if (!volume.Read(table->position, start, 8)) {
        return false;
    }
    free -= CountFreeEntries(ByteView(start.data(), start.size()), 2, table->entryBits);
    outSpace = {table->clusters * table->clusterBytes, free * table->clusterBytes};
    return true;
}

bool ReadNtfsSpace(const VolumeRange& volume, ByteView sector, VolumeSpace& outSpace)
{
    const std::optional<NtfsTableLayout> boot = ReadNtfsTableLayout(sector);
    Bytes record;
    if (!boot ||
        !volume.Read(boot->mftPosition + BitmapRecordNumber * boot->recordBytes, record,
                     boot->recordBytes) ||
        !UndoFixups(record)) {
        return false;
    }
    const auto runs = FindDataRuns(ByteView(record.data(), record.size()), boot->clusters);
    if (!runs) {
        return false;
    }
    std::uint64_t used = 0;
    std::uint64_t left = boot->clusters;  // bits that still have to come
    Bytes piece;
    for (const ClusterRun& run : *runs) {
        const std::uint64_t runBytes = run.clusters * boot->clusterBytes;
        for (std::uint64_t at = 0; at < runBytes && left != 0; at += PieceBytes) {
            const std::uint64_t size =
                std::min({std::uint64_t{PieceBytes}, runBytes - at, (left + 7) / 8});
            if (!volume.Read(run.firstCluster * boot->clusterBytes + at, piece,
                             static_cast<std::size_t>(size))) {
                return false;
            }
            const std::uint64_t bits = std::min(left, size * 8);
            used += CountUsedBits(ByteView(piece), bits);
            left -= bits;
        }
    }
    if (left != 0) {
        return false;
    }
    outSpace = {boot->clusters * boot->clusterBytes, (boot->clusters - used) * boot->clusterBytes};
    return true;
}

}  // namespace

bool ReadVolumeSpace(IByteReader& reader,
                     std::uint64_t startByte,
                     std::uint64_t byteCount,
                     VolumeSpace& outSpace)
{
    const VolumeRange volume(reader, startByte, byteCount);
    Bytes sector;
    // Whatever the sectors' size is, all that is read of the first one lies in its first 512 bytes.
    if (!volume.Read(0, sector, 512)) {
        return false;
    }
    const ByteView boot(sector.data(), sector.size());
    return HasNtfsName(boot) ? ReadNtfsSpace(volume, boot, outSpace)
                             : ReadFatSpace(volume, boot, outSpace);
}
