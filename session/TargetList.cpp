#include "session/TargetList.h"

#include "session/Guard.h"
#include "storage/DiskEnumerator.h"
#include "storage/DriveRegistry.h"

#include <algorithm>
#include <map>

namespace {

// A row's disk as the system describes it.
struct DiskSeen
{
    BlockDevice device;
    DiskFacts facts;
};

DiskSeen LookAtDisk(std::uint32_t diskNumber)
{
    DiskSeen seen;
    const auto disk = DriveRegistry::Instance().Find(diskNumber);
    if (disk) {
        seen.device = *disk;
    }
    FileHandle handle;
    seen.facts.number = diskNumber;
    seen.facts.node = seen.device.Node();
    seen.facts.model = seen.device.model;
    seen.facts.sizeBytes = seen.device.sizeBytes;
    seen.facts.sectorSize = seen.device.sectorSize;
    seen.facts.removable = seen.device.removable;
    seen.facts.readable = handle.OpenForReading(seen.facts.node) == ResultSuccess;
    return seen;
}

TargetKind KindOf(const VolumeRecord& volume)
{
    if (volume.PartitionType != 0 && volume.PartitionNumber != 0) {
        return TargetKind::Partition;
    }
    // A gap never begins before the first track's end.
    return volume.StartSector == 0 ? TargetKind::Disk : TargetKind::Gap;
}

std::string WithoutSeparator(const std::string& rootPath)
{
    return rootPath.size() > 1 ? rootPath.substr(0, rootPath.size() - 1) : rootPath;
}

// The node of a partition where the kernel has read the table too, else the disk's.
std::filesystem::path NodeOf(const VolumeRecord& volume, const BlockDevice& disk)
{
    for (const KernelPartition& partition : disk.partitions) {
        if (partition.startByte == volume.StartSector * disk.sectorSize &&
            volume.PartitionType != 0) {
            return BlockDevice::NodeOf(partition.name);
        }
    }
    return disk.Node();
}

TargetRow MakeRow(const VolumeRecord& volume, const DiskSeen& disk)
{
    TargetRow row;
    row.kind = KindOf(volume);
    row.number = volume.Letter;
    row.disk = disk.facts;
    row.node = NodeOf(volume, disk.device);
    FillRow(row, volume);
    return row;
}

}  // namespace

void FillRow(TargetRow& row, const VolumeRecord& volume)
{
    row.partitionType = volume.PartitionType;
    row.startSector = volume.StartSector;
    row.sectorCount = volume.SectorCount;
    row.totalBytes = volume.TotalBytes;
    row.usedBytes = volume.UsedBytes;
    row.freeBytes = volume.FreeBytes;
    row.spaceKnown = volume.SpaceKnown;
    row.fileSystem = volume.FileSystemName;
    row.label = volume.VolumeLabel;
    row.mountPoint = WithoutSeparator(volume.RootPath);
}

std::vector<TargetRow> WholeDiskRows(const TargetList& list)
{
    std::map<std::uint32_t, TargetRow> wholes;
    char16_t last = 0;
    for (const TargetRow& row : list.rows) {
        last = std::max(last, row.number);
        TargetRow& whole = wholes[row.disk.number];
        whole.disk = row.disk;
        // A disk without partitions, or with a file system that begins at its first sector, has its row.
        whole.number = row.startSector == 0 ? 1 : whole.number;
    }
    std::vector<TargetRow> rows;
    for (auto& [number, whole] : wholes) {
        if (whole.number != 0 || whole.disk.sizeBytes < whole.disk.sectorSize) {
            continue;
        }
        whole.kind = TargetKind::Disk;
        whole.number = ++last;
        whole.node = whole.disk.node;
        whole.sectorCount = whole.disk.sizeBytes / whole.disk.sectorSize;
        whole.totalBytes = whole.disk.sizeBytes;
        rows.push_back(std::move(whole));
    }
    return rows;
}

ScanTarget TargetOfImage(const std::filesystem::path& file, char16_t id)
{
    ScanTarget target;
    std::error_code error;
    target.imagePath = std::filesystem::canonical(file, error);
    if (error) {
        target.imagePath = file;  // its opening tells what is wrong
    }
    target.letter = id;
    return target;
}

ScanTarget WholeDisk(std::uint32_t diskNumber)
{
    ScanTarget target;
    target.diskNumber = diskNumber;
    if (const auto disk = DriveRegistry::Instance().Find(diskNumber)) {
        target.sectorSize = disk->sectorSize;
        target.sectorCount = disk->sizeBytes / disk->sectorSize;
    }
    return target;
}

ScanTarget TargetOf(const TargetRow& row)
{
    ScanTarget target;
    target.imagePath = row.imagePath;
    target.letter = row.number;
    target.diskNumber = row.disk.number;
    target.startSector = row.startSector;
    target.sectorCount = row.sectorCount;
    target.sectorSize = row.disk.sectorSize;
    return target;
}

TargetLister::TargetLister() : m_enumerator(std::make_unique<DiskEnumerator>()) {}

TargetLister::~TargetLister() = default;

TargetList TargetLister::List(const ProgressFunction& progress)
{
    TargetList list;
    const ResultCode result = RunGuarded([&] { list = ListGuarded(progress); });
    if (result != ResultSuccess) {
        list.end = result == ResultOutOfMemory ? ListEnd::OutOfMemory : ListEnd::Failed;
    }
    return list;
}

TargetList TargetLister::ListGuarded(const ProgressFunction& progress)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    TargetList list;
    bool stopped = false;
    const auto goesOn = [&](std::size_t disksDone, std::size_t disks) {
        Progress shown;
        shown.percent = static_cast<std::int32_t>(disksDone * 100 / disks);
        shown.done = disksDone;
        shown.total = disks;
        stopped = progress && progress(shown) != Answer::GoOn;
        return !stopped;
    };
    if (m_enumerator->Enumerate(goesOn) == 0) {
        list.end = stopped ? ListEnd::Stopped : ListEnd::NotListed;
        return list;
    }
    std::vector<VolumeRecord> volumes;
    m_enumerator->Snapshot(volumes);
    std::map<std::uint32_t, DiskSeen> disks;
    for (const VolumeRecord& volume : volumes) {
        const auto known = disks.find(volume.DiskNumber);
        const DiskSeen& disk =
            known != disks.end()
                ? known->second
                : disks.emplace(volume.DiskNumber, LookAtDisk(volume.DiskNumber)).first->second;
        list.rows.push_back(MakeRow(volume, disk));
    }
    return list;
}
