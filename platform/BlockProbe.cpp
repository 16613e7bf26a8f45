#include "platform/BlockProbe.h"

#include "platform/Text.h"

#include <blkid/blkid.h>
#include <limits>
#include <memory>
#include <optional>
#include <string_view>
#include <type_traits>

namespace {

using Probe = std::unique_ptr<std::remove_pointer_t<blkid_probe>, decltype(&blkid_free_probe)>;

// libblkid counts in these whatever the disk's own sectors are.
constexpr std::uint64_t ProbeUnit = 512;
constexpr std::uint64_t LargestOffset = std::numeric_limits<std::int64_t>::max();
// As many as the kernel itself takes from a table: a damaged or hostile one can have millions.
constexpr std::size_t MostPartitions = 256;
// More than any disk shows; ends a probe that would go on for ever.
constexpr int LargestFindings = 32;

Probe MakeProbe(const FileHandle& disk,
                std::uint64_t startByte,
                std::uint64_t byteCount,
                std::uint32_t sectorSize)
{
    Probe probe(blkid_new_probe(), &blkid_free_probe);
    if (probe != nullptr && startByte <= LargestOffset && byteCount <= LargestOffset &&
        blkid_probe_set_device(probe.get(), disk.Descriptor(), static_cast<blkid_loff_t>(startByte),
                               static_cast<blkid_loff_t>(byteCount)) == 0) {
        // A regular file that stands in for a disk has no sector size that could be asked for.
        (void)blkid_probe_set_sectorsize(probe.get(), sectorSize);
        return probe;
    }
    return {nullptr, &blkid_free_probe};
}

std::string ValueOf(blkid_probe probe, const char* name)
{
    const char* value = nullptr;
    return blkid_probe_lookup_value(probe, name, &value, nullptr) == 0 && value != nullptr
               ? value
               : std::string();
}

int RankOf(const std::string& type)
{
    return type == "ntfs" ? 0 : type == "vfat" ? 1 : 2;
}

// A position or length that libblkid gives, in bytes; nothing when it makes no sense.
std::optional<std::uint64_t> BytesOf(blkid_loff_t units)
{
    constexpr auto MostUnits = static_cast<blkid_loff_t>(LargestOffset / ProbeUnit);
    return units >= 0 && units <= MostUnits
               ? std::optional(static_cast<std::uint64_t>(units) * ProbeUnit)
               : std::nullopt;
}

std::optional<ProbedPartition> PartitionFrom(blkid_partition found, bool dosTable)
{
    const std::optional<std::uint64_t> start = BytesOf(blkid_partition_get_start(found));
    const std::optional<std::uint64_t> size = BytesOf(blkid_partition_get_size(found));
    const int number = blkid_partition_get_partno(found);
    if (!start || size.value_or(0) == 0 || number < 0) {
        return std::nullopt;
    }
    ProbedPartition partition;
    partition.number = static_cast<std::uint32_t>(number);
    partition.startByte = *start;
    partition.byteCount = *size;
    if (dosTable) {
        partition.type = static_cast<std::uint8_t>(blkid_partition_get_type(found) & 0xFF);
    }
    const char* guid = blkid_partition_get_type_string(found);
    partition.typeGuid = guid != nullptr ? LowerAscii(guid) : std::string();
    partition.extended = blkid_partition_is_extended(found) != 0;
    return partition;
}

}  // namespace

ProbedTable ProbePartitionTable(const FileHandle& disk, std::uint32_t sectorSize)
{
    ProbedTable table;
    const Probe probe = MakeProbe(disk, 0, 0, sectorSize);
    if (probe == nullptr || blkid_probe_enable_partitions(probe.get(), 1) != 0) {
        return table;
    }
    const blkid_partlist list = blkid_probe_get_partitions(probe.get());
    const blkid_parttable mainTable = list != nullptr ? blkid_partlist_get_table(list) : nullptr;
    const char* kind = mainTable != nullptr ? blkid_parttable_get_type(mainTable) : nullptr;
    // Of all formats this one's check is so weak that noise passes it.
    if (kind == nullptr || std::string_view(kind) == "atari") {
        return table;
    }
    table.kind = kind;
    const char* id = blkid_parttable_get_id(mainTable);
    table.id = id != nullptr ? id : "";
    const int count = blkid_partlist_numof_partitions(list);
    for (int i = 0; i < count && table.partitions.size() < MostPartitions; ++i) {
        const blkid_partition found = blkid_partlist_get_partition(list, i);
        // A table of slices inside one partition is not the disk's own.
        if (found == nullptr || blkid_partition_get_table(found) != mainTable) {
            continue;
        }
        if (const std::optional<ProbedPartition> partition =
                PartitionFrom(found, table.kind == "dos")) {
            table.partitions.push_back(*partition);
        }
    }
    return table;
}

ProbedFileSystem ProbeFileSystem(const FileHandle& disk,
                                 std::uint64_t startByte,
                                 std::uint64_t byteCount,
                                 std::uint32_t sectorSize)
{
    ProbedFileSystem best;
    // A size of 0 would mean "to the end of the disk".
    const Probe probe = byteCount != 0 ? MakeProbe(disk, startByte, byteCount, sectorSize)
                                       : Probe(nullptr, nullptr);
    if (probe == nullptr || blkid_probe_enable_superblocks(probe.get(), 1) != 0) {
        return best;
    }
    (void)blkid_probe_set_superblocks_flags(
        probe.get(), BLKID_SUBLKS_LABEL | BLKID_SUBLKS_UUID | BLKID_SUBLKS_TYPE |
                         BLKID_SUBLKS_USAGE | BLKID_SUBLKS_VERSION);
    int bestRank = std::numeric_limits<int>::max();
    // Step by step: the safe probe says nothing at all where two signatures stand.
    for (int i = 0; i < LargestFindings && blkid_do_probe(probe.get()) == 0; ++i) {
        const std::string type = ValueOf(probe.get(), "TYPE");
        if (type.empty()) {
            continue;
        }
        const bool isFileSystem = ValueOf(probe.get(), "USAGE") == "filesystem";
        const int rank = RankOf(type);
        if (rank < bestRank) {
            bestRank = rank;
            best.name = FileSystemDisplayName(type, ValueOf(probe.get(), "VERSION"));
            best.label = ValueOf(probe.get(), "LABEL");
            best.id = ValueOf(probe.get(), "UUID");
            best.isFileSystem = isFileSystem;
            if (type == "vfat") {
                best.label = CodePage437ToUtf8(best.label);
            }
        }
    }
    best.label = Utf16ToUtf8(Utf8ToUtf16(best.label));  // whatever the disk held, it is UTF-8 now
    return best;
}

std::string FileSystemDisplayName(std::string_view type, std::string_view version)
{
    if (type == "vfat") {
        return version == "FAT32" ? "FAT32" : "FAT";
    }
    return type == "ntfs" ? "NTFS" : type == "exfat" ? "exFAT" : Utf16ToUtf8(Utf8ToUtf16(type));
}
