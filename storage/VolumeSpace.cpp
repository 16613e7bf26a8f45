#include "storage/VolumeSpace.h"

#include "platform/ByteView.h"

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <vector>

namespace {

constexpr std::size_t PieceBytes = std::size_t{1} << 20;
// Of a volume: what the widest numbers in use can count. Damaged and hostile tables say more, and would be read for hours.
constexpr std::uint64_t MostFatClusters = 0x0FFFFFF5;
constexpr std::uint64_t MostNtfsClusters = std::uint64_t{1} << 32;
constexpr std::uint64_t MostRuns = 65536;  // of a bitmap; far more than one record can hold

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
    std::uint64_t Size() const { return m_count; }

private:
    IByteReader& m_reader;
    std::uint64_t m_start;
    std::uint64_t m_count;
};

bool IsPowerOfTwo(std::uint64_t value)
{
    return value != 0 && (value & (value - 1)) == 0;
}

// Where a volume's FAT lies and how much of it counts.
struct FatTable
{
    std::uint64_t position = 0;
    std::uint64_t clusters = 0;
    std::uint64_t clusterBytes = 0;
    unsigned entryBits = 0;
};

// Boot sector, little-endian: 11 bytes per sector, 13 sectors per cluster, 14 reserved sectors, 16 FATs, 17 root entries,
// 19 sectors (0: see 32), 22 sectors per FAT (0: see 36).
std::optional<FatTable> ReadFatBoot(ByteView boot)
{
    const std::uint64_t sectorBytes = boot.U16(11);
    const std::uint64_t clusterSectors = boot.U8(13);
    const std::uint64_t reserved = boot.U16(14);
    const std::uint64_t fats = boot.U8(16);
    const std::uint64_t rootBytes = std::uint64_t{boot.U16(17)} * 32;
    const std::uint64_t sectors = boot.U16(19) != 0 ? boot.U16(19) : boot.U32(32);
    const std::uint64_t fatSectors = boot.U16(22) != 0 ? boot.U16(22) : boot.U32(36);
    if (!boot.Matches(510, "\x55\xAA") || !IsPowerOfTwo(sectorBytes) || sectorBytes < 512 ||
        sectorBytes > 4096 || !IsPowerOfTwo(clusterSectors) || reserved == 0 || fats == 0 ||
        fatSectors == 0) {
        return std::nullopt;
    }
    const std::uint64_t rootSectors = (rootBytes + sectorBytes - 1) / sectorBytes;
    const std::uint64_t beforeData = reserved + fats * fatSectors + rootSectors;
    if (beforeData >= sectors) {
        return std::nullopt;
    }
    FatTable table;
    table.position = reserved * sectorBytes;
    table.clusters = (sectors - beforeData) / clusterSectors;
    table.clusterBytes = clusterSectors * sectorBytes;
    table.entryBits = boot.U16(22) == 0 ? 32 : table.clusters < 4085 ? 12 : 16;
    const std::uint64_t fatBytes = fatSectors * sectorBytes;
    const bool fits = (table.clusters + 2) * table.entryBits <= fatBytes * 8;
    const bool countable = table.clusters != 0 && table.clusters <= MostFatClusters;
    return fits && countable ? std::optional(table) : std::nullopt;
}

// One piece of a FAT holds whole entries of every width: its size is a multiple of 3 and 4.
constexpr std::size_t FatPieceBytes = PieceBytes / 12 * 12;

bool IsFreeEntry(ByteView piece, std::uint64_t index, unsigned entryBits)
{
    if (entryBits == 32) {
        return (piece.U32(index * 4) & 0x0FFFFFFFU) == 0;
    }
    if (entryBits == 16) {
        return piece.U16(index * 2) == 0;
    }
    const unsigned pair = piece.U16(index * 3 / 2);
    return (index % 2 == 0 ? pair & 0xFFFU : pair >> 4) == 0;
}

std::uint64_t CountFreeEntries(ByteView piece, std::uint64_t entries, unsigned entryBits)
{
    std::uint64_t free = 0;
    for (std::uint64_t i = 0; i < entries; ++i) {
        if (IsFreeEntry(piece, i, entryBits)) {
            ++free;
        }
    }
    return free;
}

bool ReadFatSpace(const VolumeRange& volume, ByteView boot, VolumeSpace& outSpace)
{
    const std::optional<FatTable> table = ReadFatBoot(boot);
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

struct NtfsBoot
{
    std::uint64_t clusterBytes = 0;
    std::uint64_t clusters = 0;
    std::uint64_t mftPosition = 0;
    std::size_t recordBytes = 0;
};

// Boot sector, little-endian: 11 bytes per sector, 13 sectors per cluster (above 128 a power of two), 40 sectors, 48 first
// cluster of the table, 64 record size in clusters or, negative, as a power of two.
std::optional<NtfsBoot> ReadNtfsBoot(ByteView sector)
{
    const std::uint64_t sectorBytes = sector.U16(11);
    const unsigned perCluster = sector.U8(13);
    const std::uint64_t sectors = sector.U64(40);
    const std::uint64_t mftCluster = sector.U64(48);
    const unsigned recordSize = sector.U8(64);
    const std::uint64_t clusterSectors = perCluster <= 128         ? perCluster
                                         : 256 - perCluster <= 12U ? 1ULL << (256 - perCluster)
                                                                   : 0;
    if (!IsPowerOfTwo(sectorBytes) || sectorBytes < 256 || sectorBytes > 4096 ||
        !IsPowerOfTwo(clusterSectors) || sectors == 0 || sectors > INT64_MAX / 4096) {
        return std::nullopt;
    }
    NtfsBoot boot;
    boot.clusterBytes = sectorBytes * clusterSectors;
    boot.clusters = sectors / clusterSectors;
    boot.recordBytes =
        static_cast<std::size_t>(recordSize < 128 ? recordSize * boot.clusterBytes
                                                  : 1ULL << std::min(256 - recordSize, 20U));
    if (boot.clusters > MostNtfsClusters || mftCluster >= boot.clusters || boot.recordBytes < 512 ||
        boot.recordBytes > 65536) {
        return std::nullopt;
    }
    boot.mftPosition = mftCluster * boot.clusterBytes;
    return boot;
}

// The last two bytes of each 512 of a record were swapped for a check value when it was written; puts them back.
bool UndoFixups(Bytes& record)
{
    constexpr std::size_t Stride = 512;
    const ByteView view(record.data(), record.size());
    const std::size_t offset = view.U16(4);
    const std::size_t count = view.U16(6);
    if (!view.Matches(0, "FILE") || count != record.size() / Stride + 1 ||
        !view.Covers(offset, count * 2)) {
        return false;
    }
    for (std::size_t i = 1; i < count; ++i) {
        const std::size_t end = i * Stride - 2;
        if (view.U16(end) != view.U16(offset)) {
            return false;
        }
        record[end] = record[offset + i * 2];
        record[end + 1] = record[offset + i * 2 + 1];
    }
    return true;
}

struct ClusterRun
{
    std::uint64_t firstCluster = 0;
    std::uint64_t clusters = 0;
};

std::optional<std::vector<ClusterRun>> DecodeRuns(ByteView runs, std::uint64_t volumeClusters)
{
    std::vector<ClusterRun> list;
    std::uint64_t cluster = 0;
    for (std::size_t at = 0; runs.U8(at) != 0 && list.size() < MostRuns;) {
        const std::size_t lengthBytes = runs.U8(at) & 0x0F;
        const std::size_t offsetBytes = runs.U8(at) >> 4;
        // A bitmap has no holes, so that a run without a place is damage.
        if (lengthBytes == 0 || lengthBytes > 8 || offsetBytes == 0 || offsetBytes > 8 ||
            !runs.Covers(at + 1, lengthBytes + offsetBytes)) {
            return std::nullopt;
        }
        std::uint64_t length = 0;
        std::uint64_t offset = 0;
        for (std::size_t i = 0; i < lengthBytes; ++i) {
            length |= std::uint64_t{runs.U8(at + 1 + i)} << (8 * i);
        }
        for (std::size_t i = 0; i < offsetBytes; ++i) {
            offset |= std::uint64_t{runs.U8(at + 1 + lengthBytes + i)} << (8 * i);
        }
        if (offsetBytes < 8 && (offset >> (8 * offsetBytes - 1)) != 0) {
            offset |= ~std::uint64_t{0} << (8 * offsetBytes);  // backwards
        }
        cluster += offset;
        if (length == 0 || cluster >= volumeClusters || length > volumeClusters - cluster) {
            return std::nullopt;
        }
        list.push_back({cluster, length});
        at += 1 + lengthBytes + offsetBytes;
    }
    return list;
}

// The runs of the unnamed data attribute: offsets 8 not resident, 9 length of the name, 32 runs.
std::optional<std::vector<ClusterRun>> FindDataRuns(ByteView record, std::uint64_t volumeClusters)
{
    constexpr std::uint32_t DataType = 0x80;
    constexpr std::uint32_t EndType = 0xFFFFFFFF;
    for (std::size_t at = record.U16(20); record.Covers(at, 64) && record.U32(at) != EndType;) {
        const std::size_t length = record.U32(at + 4);
        if (length < 24 || !record.Covers(at, length)) {
            return std::nullopt;
        }
        const ByteView attribute = record.Sub(at, length);
        if (attribute.U32(0) == DataType && attribute.U8(8) == 1 && attribute.U8(9) == 0) {
            const std::size_t runs = attribute.U16(32);
            return DecodeRuns(attribute.Sub(runs, length - std::min(runs, length)), volumeClusters);
        }
        at += length;
    }
    return std::nullopt;
}

// The number of bits that are set; the volume's end may lie inside the last byte.
std::uint64_t CountUsed(const Bytes& piece, std::uint64_t bits)
{
    const ByteView view(piece.data(), piece.size());
    std::uint64_t used = 0;
    std::uint64_t done = 0;
    for (; done + 64 <= bits; done += 64) {
        used += static_cast<std::uint64_t>(std::popcount(view.U64(done / 8)));
    }
    for (; done < bits; ++done) {
        const unsigned byte = view.U8(done / 8);
        used += (byte >> (done % 8)) & 1U;
    }
    return used;
}

bool ReadNtfsSpace(const VolumeRange& volume, ByteView sector, VolumeSpace& outSpace)
{
    constexpr std::uint64_t BitmapRecord = 6;
    const std::optional<NtfsBoot> boot = ReadNtfsBoot(sector);
    Bytes record;
    if (!boot ||
        !volume.Read(boot->mftPosition + BitmapRecord * boot->recordBytes, record,
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
            used += CountUsed(piece, bits);
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
    return boot.Matches(3, "NTFS    ") ? ReadNtfsSpace(volume, boot, outSpace)
                                       : ReadFatSpace(volume, boot, outSpace);
}
