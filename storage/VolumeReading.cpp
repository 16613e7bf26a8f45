#include "storage/VolumeReading.h"

#include "platform/BlockProbe.h"
#include "platform/Text.h"
#include "recovery/metadata/FileSystemRecognition.h"
#include "storage/ByteReader.h"
#include "storage/VolumeSpace.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>

namespace {

constexpr std::uint8_t TypeOther = 7;  // of what no table gives a type that fits one byte
constexpr std::uint8_t TypeLinux = 0x83;

struct GuidRow
{
    std::string_view guid;
    std::uint8_t type;
};

constexpr GuidRow GuidTypes[] = {
    {"c12a7328-f81f-11d2-ba4b-00a0c93ec93b", 0xEF},  // system partition of the firmware
    {"0fc63daf-8483-4772-8e79-3d69d8477de4", TypeLinux},
    {"0657fd6d-a4ab-43c4-84e5-0933c84b4f4f", 0x82},  // swap
    {"e6d6d379-f507-44c2-a23c-238f2a3df928", 0x8E},  // part of a volume group
    {"a19d880f-05fc-4d3b-a006-743f0f84911e", 0xFD},  // part of an array
    {"e3c9e316-0b5c-4db8-817d-f92df00215ae", 0},     // reserved: no volume, and left out
};

std::uint8_t TypeOfGuid(std::string_view guid)
{
    const auto* const row =
        std::find_if(std::begin(GuidTypes), std::end(GuidTypes),
                     [guid](const GuidRow& known) { return known.guid == guid; });
    return row != std::end(GuidTypes) ? row->type : TypeOther;
}

bool IsExtended(std::uint8_t dosType)
{
    return dosType == 0x05 || dosType == 0x0F || dosType == 0x85;
}

// The file system knows better than the table.
std::uint8_t TypeOfFileSystem(std::string_view name, std::uint8_t tableType)
{
    if (EqualIgnoringAsciiCase(name, "NTFS")) {
        return 7;
    }
    if (EqualIgnoringAsciiCase(name, "FAT32")) {
        return 11;
    }
    return EqualIgnoringAsciiCase(name, "FAT") ? 6 : tableType;
}

// Ends the long reading of a table where the user has asked for it.
class StoppableReader : public IByteReader
{
public:
    StoppableReader(FileHandle handle, const std::function<bool()>& goesOn)
        : m_reader(MakeHandleReader(std::move(handle))), m_goesOn(goesOn)
    {
    }
    ResultCode ReadAt(std::uint64_t position,
                      std::uint8_t* buffer,
                      std::size_t count,
                      std::size_t* outRead) override
    {
        *outRead = 0;
        return m_goesOn() ? m_reader->ReadAt(position, buffer, count, outRead) : ResultCancelled;
    }

private:
    std::unique_ptr<IByteReader> m_reader;
    const std::function<bool()>& m_goesOn;
};

// One disk while it is read.
class DiskReading
{
public:
    DiskReading(const BlockDevice& device, std::uint32_t number, const StorageMap& map)
        : m_disk(device),
          m_diskNumber(number),
          m_storage(map),
          m_sizeBytes(device.sizeBytes),
          m_sectorSize(device.sectorSize)
    {
    }

    std::vector<VolumeRecord> FromDisk(FileHandle handle, const std::function<bool()>& goesOn);
    std::vector<VolumeRecord> FromTable(FileHandle handle, const std::function<bool()>& goesOn);
    std::vector<VolumeRecord> FromSystemTables();

    std::uint64_t SizeBytes() const { return m_sizeBytes; }
    std::uint32_t SectorSize() const { return m_sectorSize; }

private:
    std::uint64_t BytesInside(std::uint64_t startByte, std::uint64_t byteCount) const;
    VolumeRecord
    Begin(std::uint32_t partition, std::uint64_t startByte, std::uint64_t byteCount) const;
    void Finish(VolumeRecord& volume, std::uint8_t tableType, IByteReader* reader) const;
    void ProbeInto(VolumeRecord& volume, const FileHandle& handle) const;
    void LookAt(const FileHandle& handle);
    void Take(const ProbedTable& table);
    std::vector<VolumeRecord> Describe(FileHandle handle, const std::function<bool()>& goesOn);

    const BlockDevice& m_disk;
    std::uint32_t m_diskNumber;
    const StorageMap& m_storage;
    std::uint64_t m_sizeBytes;
    std::uint32_t m_sectorSize;
    std::vector<VolumeRecord> m_volumes;
    std::vector<std::uint8_t> m_types;  // of each, as its table says
};

// A disk that was cut, or whose table is damaged, has partitions past its end. What has not one whole sector is nothing
// that could be read.
std::uint64_t DiskReading::BytesInside(std::uint64_t startByte, std::uint64_t byteCount) const
{
    const std::uint64_t inside =
        startByte < m_sizeBytes ? std::min(byteCount, m_sizeBytes - startByte) : 0;
    return inside >= m_sectorSize ? inside : 0;
}

VolumeRecord
DiskReading::Begin(std::uint32_t partition, std::uint64_t startByte, std::uint64_t byteCount) const
{
    VolumeRecord volume;
    volume.DiskNumber = m_diskNumber;
    volume.PartitionNumber = partition;
    volume.StartSector = startByte;
    volume.SectorCount = byteCount;
    return volume;
}

// Type, mount point and how full it is. Of a mounted file system it is itself that is asked.
void DiskReading::Finish(VolumeRecord& volume, std::uint8_t tableType, IByteReader* reader) const
{
    volume.TotalBytes = volume.SectorCount;
    VolumeSpace space;
    const MountEntry* mount = FindMountAt(m_storage, m_disk.deviceNumber, volume.StartSector);
    if (mount != nullptr) {
        if (volume.FileSystemName.empty()) {
            volume.FileSystemName = MountedFileSystemName(*mount);
        }
        volume.RootPath = mount->mountPoint + (mount->mountPoint.ends_with('/') ? "" : "/");
    }
    const bool told = (mount != nullptr && FileSystemSpace(mount->mountPoint, &space.totalBytes,
                                                           &space.freeBytes) == ResultSuccess) ||
                      (reader != nullptr &&
                       ReadVolumeSpace(*reader, volume.StartSector, volume.SectorCount, space));
    volume.SpaceKnown = told;
    if (told) {
        volume.TotalBytes = space.totalBytes;
        volume.FreeBytes = std::min(space.freeBytes, space.totalBytes);
    }
    volume.UsedBytes = volume.TotalBytes - volume.FreeBytes;
    volume.PartitionType = TypeOfFileSystem(volume.FileSystemName, tableType);
}

void DiskReading::ProbeInto(VolumeRecord& volume, const FileHandle& handle) const
{
    const ProbedFileSystem found =
        ProbeFileSystem(handle, volume.StartSector, volume.SectorCount, m_sectorSize);
    volume.FileSystemName = found.name;
    volume.VolumeLabel = found.label;
}

void DiskReading::LookAt(const FileHandle& handle)
{
    // A file in place of a device tells its size only so.
    if (handle.Size(&m_sizeBytes) != ResultSuccess) {
        m_sizeBytes = m_disk.sizeBytes;
    }
    m_sectorSize = std::max(m_sectorSize, handle.DeviceSectorSize());
    // What was written through another node of a device is not seen here as long as the system keeps what it has read
    // before. An image has one way in, and what is kept of it spares the scan a second reading.
    if (handle.IsBlockDevice()) {
        handle.DropCache();
    }
}

void DiskReading::Take(const ProbedTable& table)
{
    for (const ProbedPartition& partition : table.partitions) {
        const std::uint8_t type =
            table.kind == "dos" ? partition.type : TypeOfGuid(partition.typeGuid);
        const std::uint64_t inside = BytesInside(partition.startByte, partition.byteCount);
        if (partition.extended || type == 0 || inside == 0) {
            continue;
        }
        m_volumes.push_back(Begin(partition.number, partition.startByte, inside));
        m_types.push_back(type);
    }
}

std::vector<VolumeRecord> DiskReading::Describe(FileHandle handle,
                                                const std::function<bool()>& goesOn)
{
    for (VolumeRecord& volume : m_volumes) {
        ProbeInto(volume, handle);
    }
    StoppableReader reader(std::move(handle), goesOn);
    for (std::size_t i = 0; i < m_volumes.size(); ++i) {
        Finish(m_volumes[i], m_types[i], &reader);
    }
    return std::move(m_volumes);
}

std::vector<VolumeRecord> DiskReading::FromDisk(FileHandle handle,
                                                const std::function<bool()>& goesOn)
{
    LookAt(handle);
    const ProbedTable table = ProbePartitionTable(handle, m_sectorSize);
    Take(table);
    if (table.partitions.empty() &&
        ProbeFileSystem(handle, 0, m_sizeBytes, m_sectorSize).isFileSystem) {
        m_volumes.push_back(Begin(0, 0, m_sizeBytes));
        m_types.push_back(TypeLinux);
    }
    return Describe(std::move(handle), goesOn);
}

// A volume's own first sector ends like a table and is none, also where another program takes noise in it for partitions.
bool BeginsWithVolume(const FileHandle& handle)
{
    std::array<std::uint8_t, 512> start = {};
    std::size_t got = 0;
    if (handle.ReadAt(0, start.data(), start.size(), &got) != ResultSuccess) {
        return false;
    }
    const ByteView sector(start.data(), got);
    return IsNtfsBootSector(sector) || IsFatBootSector(sector);
}

std::vector<VolumeRecord> DiskReading::FromTable(FileHandle handle,
                                                 const std::function<bool()>& goesOn)
{
    constexpr std::uint8_t ProtectiveType = 0xEE;  // stands for a table of the other kind
    constexpr std::uint32_t LargeSectorSize = 4096;
    LookAt(handle);
    if (BeginsWithVolume(handle)) {
        return {};
    }
    ProbedTable table = ProbePartitionTable(handle, m_sectorSize);
    const bool onlyProtects =
        std::all_of(table.partitions.begin(), table.partitions.end(),
                    [](const ProbedPartition& one) { return one.type == ProtectiveType; });
    // An image does not say how large its disk's sectors were.
    if (table.kind != "gpt" && onlyProtects && !handle.IsBlockDevice()) {
        table = ProbePartitionTable(handle, LargeSectorSize);
    }
    if (table.kind != "gpt" && (table.kind != "dos" || onlyProtects)) {
        return {};
    }
    Take(table);
    return Describe(std::move(handle), goesOn);
}

std::optional<std::uint8_t> DosType(std::string_view text)
{
    constexpr std::string_view Prefix = "0x";
    unsigned type = 0;
    if (!text.starts_with(Prefix)) {
        return std::nullopt;
    }
    text.remove_prefix(Prefix.size());
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), type, 16);
    return error == std::errc() && type <= 0xFF ? std::optional(static_cast<std::uint8_t>(type))
                                                : std::nullopt;
}

std::vector<VolumeRecord> DiskReading::FromSystemTables()
{
    // The kernel shows an extended partition as two sectors, so that nobody writes over it.
    constexpr std::uint64_t ExtendedBytes = 1024;
    std::vector<VolumeRecord> volumes;
    for (const KernelPartition& partition : m_disk.partitions) {
        const ManagedProperties known = ReadManagedProperties(partition.deviceNumber);
        const std::optional<std::uint8_t> dosType = DosType(known.partitionType);
        const std::uint8_t type = dosType.value_or(TypeOfGuid(known.partitionType));
        const bool extended = dosType ? IsExtended(*dosType) : partition.byteCount <= ExtendedBytes;
        const std::uint64_t inside = BytesInside(partition.startByte, partition.byteCount);
        if (extended || type == 0 || inside == 0) {
            continue;
        }
        VolumeRecord volume = Begin(partition.number, partition.startByte, inside);
        volume.FileSystemName = known.fileSystem;
        volume.VolumeLabel = known.label;
        Finish(volume, type, nullptr);
        volumes.push_back(std::move(volume));
    }
    const ManagedProperties whole = ReadManagedProperties(m_disk.deviceNumber);
    const bool mounted = FindMountAt(m_storage, m_disk.deviceNumber, 0) != nullptr;
    if (m_disk.partitions.empty() && (mounted || !whole.fileSystem.empty())) {
        VolumeRecord volume = Begin(0, 0, m_sizeBytes);
        volume.FileSystemName = whole.fileSystem;
        volume.VolumeLabel = whole.label;
        Finish(volume, TypeLinux, nullptr);
        volumes.push_back(std::move(volume));
    }
    return volumes;
}

}  // namespace

const MountEntry*
FindMountAt(const StorageMap& storage, const std::string& diskDeviceNumber, std::uint64_t startByte)
{
    for (const MountEntry& mount : storage.Mounts()) {
        std::string device = mount.deviceNumber;
        if (device.starts_with("0:") && mount.source.starts_with("/dev/")) {
            device = DeviceNumberOf(mount.source);  // a file system with numbers of its own
        }
        for (const StorageExtent& extent : storage.OfDevice(device)) {
            if (extent.deviceNumber == diskDeviceNumber && extent.startByte == startByte &&
                !IsCovered(mount, storage.Mounts())) {
                return &mount;
            }
        }
    }
    return nullptr;
}

std::vector<VolumeRecord> ReadVolumes(const BlockDevice& disk,
                                      std::uint32_t diskNumber,
                                      const StorageMap& storage,
                                      std::uint64_t* outSizeBytes,
                                      std::uint32_t* outSectorSize,
                                      const std::function<bool()>& goesOn)
{
    DiskReading reading(disk, diskNumber, storage);
    FileHandle handle;
    std::vector<VolumeRecord> volumes = handle.OpenForReading(disk.Node()) == ResultSuccess
                                            ? reading.FromDisk(std::move(handle), goesOn)
                                            : reading.FromSystemTables();
    *outSizeBytes = reading.SizeBytes();
    *outSectorSize = reading.SectorSize();
    return volumes;
}

std::vector<VolumeRecord> ReadTableOf(FileHandle disk,
                                      const BlockDevice& device,
                                      std::uint32_t diskNumber,
                                      const StorageMap& storage,
                                      const std::function<bool()>& goesOn)
{
    return DiskReading(device, diskNumber, storage).FromTable(std::move(disk), goesOn);
}
