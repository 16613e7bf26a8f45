#include "recovery/metadata/VolumeTables.h"

#include "recovery/metadata/BootSectors.h"
#include "recovery/metadata/NtfsAttributes.h"
#include "recovery/metadata/NtfsRecordCodec.h"

#include <algorithm>
#include <bit>

namespace {

// What the widest numbers in use can count. Damaged and hostile tables say more, and would be read for hours.
constexpr std::uint64_t MostFatClusters = 0x0FFFFFF5;
constexpr std::uint64_t MostNtfsClusters = std::uint64_t{1} << 32;
constexpr std::uint64_t MostRuns = 65536;  // of a bitmap; far more than one record can hold
constexpr std::size_t LargestRunField = 8;

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

// Above 128 the count of sectors is a power of two, which the engines do not take for a volume at all.
std::uint64_t ClusterSectorsOf(const NtfsBootFields& boot)
{
    if (boot.sectorsPerCluster <= 128) {
        return boot.sectorsPerCluster;
    }
    const std::uint32_t power = 256 - boot.sectorsPerCluster;
    return power <= 12 ? std::uint64_t{1} << power : 0;
}

// Unlike NtfsRecordCodec's, whose sums no one adds up and whose wide offsets lose bytes: here each run must lie in the volume.
std::optional<std::vector<ClusterRun>> DecodeSoundRuns(ByteView runs, std::uint64_t volumeClusters)
{
    std::vector<ClusterRun> list;
    std::uint64_t cluster = 0;
    for (std::size_t at = 0; runs.U8(at) != 0 && list.size() < MostRuns;) {
        const std::optional<RunEntry> entry = ReadRunEntry(runs, at, LargestRunField);
        // A bitmap has no holes, so a run without a place is damage.
        if (!entry || entry->length.Empty() || entry->offset.Empty()) {
            return std::nullopt;
        }
        const std::uint64_t length = LittleEndian(entry->length);
        const std::size_t offsetBits = 8 * entry->offset.Size();
        std::uint64_t offset = LittleEndian(entry->offset);
        if (offsetBits < 64 && (offset >> (offsetBits - 1)) != 0) {
            offset |= ~std::uint64_t{0} << offsetBits;  // backwards
        }
        cluster += offset;
        if (length == 0 || cluster >= volumeClusters || length > volumeClusters - cluster) {
            return std::nullopt;
        }
        list.push_back({cluster, length});
        at += entry->Size();
    }
    return list;
}

}  // namespace

std::optional<FatTableLayout> ReadFatTableLayout(ByteView bootSector)
{
    const FatBootFields boot = ReadFatBootFields(bootSector);
    const std::uint64_t sectorBytes = boot.bytesPerSector;
    // Recognition asks the 32-bit total first; volumes that fill both in differently are damaged for one of the two.
    const std::uint64_t sectors = boot.sectors16 != 0 ? boot.sectors16 : boot.sectors32;
    const std::uint64_t fatSectors = boot.FatSectors();
    if (!HasBootMark(bootSector) || !std::has_single_bit(sectorBytes) || sectorBytes < 512 ||
        sectorBytes > 4096 || !std::has_single_bit(boot.sectorsPerCluster) ||
        boot.reservedSectors == 0 || boot.fatCount == 0 || fatSectors == 0) {
        return std::nullopt;
    }
    const std::uint64_t rootBytes = std::uint64_t{boot.rootEntries} * 32;
    const std::uint64_t rootSectors = (rootBytes + sectorBytes - 1) / sectorBytes;
    const std::uint64_t beforeData =
        boot.reservedSectors + boot.fatCount * fatSectors + rootSectors;
    if (beforeData >= sectors) {
        return std::nullopt;
    }
    FatTableLayout table;
    table.position = boot.reservedSectors * sectorBytes;
    table.clusters = (sectors - beforeData) / boot.sectorsPerCluster;
    table.clusterBytes = boot.sectorsPerCluster * sectorBytes;
    table.entryBits = boot.fatSectors16 == 0 ? 32 : table.clusters < 4085 ? 12 : 16;
    const std::uint64_t fatBytes = fatSectors * sectorBytes;
    const bool fits = (table.clusters + 2) * table.entryBits <= fatBytes * 8;
    const bool countable = table.clusters != 0 && table.clusters <= MostFatClusters;
    return fits && countable ? std::optional(table) : std::nullopt;
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

std::optional<NtfsTableLayout> ReadNtfsTableLayout(ByteView bootSector)
{
    const NtfsBootFields boot = ReadNtfsBootFields(bootSector);
    const std::uint64_t sectorBytes = boot.bytesPerSector;
    const std::uint64_t clusterSectors = ClusterSectorsOf(boot);
    if (!std::has_single_bit(sectorBytes) || sectorBytes < 256 || sectorBytes > 4096 ||
        clusterSectors == 0 || !std::has_single_bit(clusterSectors) || boot.sectors == 0 ||
        boot.sectors > INT64_MAX / 4096) {
        return std::nullopt;
    }
    NtfsTableLayout table;
    table.clusterBytes = sectorBytes * clusterSectors;
    table.clusters = boot.sectors / clusterSectors;
    table.recordBytes = static_cast<std::size_t>(
        boot.recordSize < 128 ? boot.recordSize * table.clusterBytes
                              : 1ULL << std::min(256 - boot.recordSize, 20U));
    if (table.clusters > MostNtfsClusters || boot.mftCluster >= table.clusters ||
        table.recordBytes < 512 || table.recordBytes > 65536) {
        return std::nullopt;
    }
    table.mftPosition = boot.mftCluster * table.clusterBytes;
    return table;
}

// NtfsRecordCodec repairs blindly, from a fixed place, and keeps what a torn record would lose here.
bool UndoFixups(std::span<std::uint8_t> record)
{
    constexpr std::size_t Stride = 512;
    const ByteView view(record);
    const std::size_t offset = view.U16(4);
    const std::size_t count = view.U16(6);
    if (!HasFileMagic(view) || count != record.size() / Stride + 1 ||
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

// AttributeWalk strays past the record and takes any first data attribute; here each attribute lies whole in it.
std::optional<std::vector<ClusterRun>> FindDataRuns(ByteView record, std::uint64_t volumeClusters)
{
    constexpr std::size_t SmallestAttribute = 24;
    for (std::size_t at = FirstAttributeOf(record);
         record.Covers(at, 64) && record.U32(at) != AttributeEnd;) {
        const std::size_t length = record.U32(at + 4);
        if (length < SmallestAttribute || !record.Covers(at, length)) {
            return std::nullopt;
        }
        const ByteView attribute = record.Sub(at, length);
        if (attribute.U32(0) == AttributeData && attribute.U8(AttributeNonResident) == 1 &&
            attribute.U8(AttributeNameLength) == 0) {
            return DecodeSoundRuns(attribute.Sub(attribute.U16(AttributeRunListOffset)),
                                   volumeClusters);
        }
        at += length;
    }
    return std::nullopt;
}

std::uint64_t CountUsedBits(ByteView piece, std::uint64_t bits)
{
    std::uint64_t used = 0;
    std::uint64_t done = 0;
    for (; done + 64 <= bits; done += 64) {
        used += static_cast<std::uint64_t>(std::popcount(piece.U64(done / 8)));
    }
    for (; done < bits; ++done) {
        const unsigned byte = piece.U8(done / 8);
        used += (byte >> (done % 8)) & 1U;
    }
    return used;
}
