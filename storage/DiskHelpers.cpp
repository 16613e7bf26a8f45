#include "storage/DiskHelpers.h"

#include "platform/BlockProbe.h"
#include "platform/Folders.h"
#include "platform/StorageMap.h"
#include "storage/DriveRegistry.h"

namespace {

// The name that the file system's own first sectors give; empty where they may not be read.
std::string ProbedName(const StorageMap& storage, const StorageExtent& extent)
{
    for (const BlockDevice& disk : storage.Devices()) {
        FileHandle handle;
        if (disk.deviceNumber == extent.deviceNumber &&
            handle.OpenForReading(disk.Node()) == ResultSuccess) {
            return ProbeFileSystem(handle, extent.startByte, extent.byteCount, disk.sectorSize)
                .name;
        }
    }
    return {};
}

}  // namespace

bool IsRemovable(std::uint32_t diskNumber)
{
    const std::optional<BlockDevice> disk = DriveRegistry::Instance().Find(diskNumber);
    return disk && disk->removable;
}

ResultCode GetDiskLength(std::uint32_t diskNumber, std::uint64_t* out)
{
    FileHandle handle;
    if (const ResultCode result = DriveRegistry::Instance().Open(diskNumber, handle)) {
        return result;
    }
    return handle.Size(out);
}

ResultCode GetFreeBytes(const std::filesystem::path& path, std::uint64_t* out)
{
    std::uint64_t total = 0;
    return FileSystemSpace(NearestExisting(path), &total, out);
}

std::string GetFileSystemName(const std::filesystem::path& path)
{
    const StorageMap storage;
    const MountEntry* mount = storage.MountHolding(path);
    if (mount == nullptr) {
        return {};
    }
    // Of these types the mount table does not tell which file system it is.
    if (mount->type == "vfat" || mount->type == "fuseblk") {
        for (const StorageExtent& extent : storage.OfDevice(mount->deviceNumber)) {
            const std::string probed = ProbedName(storage, extent);
            std::string name =
                probed.empty() ? ReadManagedProperties(mount->deviceNumber).fileSystem : probed;
            if (!name.empty()) {
                return name;
            }
        }
    }
    return MountedFileSystemName(*mount);
}

ResultCode GetFileSize(const std::filesystem::path& path, std::uint64_t* out)
{
    FileHandle handle;
    if (const ResultCode result = handle.OpenForReading(path)) {
        return result;
    }
    return handle.Size(out);
}

std::string DiskIdentity(std::uint32_t diskNumber)
{
    const std::optional<BlockDevice> disk = DriveRegistry::Instance().Find(diskNumber);
    FileHandle handle;
    if (!disk || DriveRegistry::Instance().Open(diskNumber, handle) != ResultSuccess) {
        return {};
    }
    std::uint64_t sizeBytes = 0;
    if (handle.Size(&sizeBytes) != ResultSuccess) {
        sizeBytes = disk->sizeBytes;
    }
    return "serial " + disk->serial + "\nbytes " + std::to_string(sizeBytes) + "\ntable " +
           ProbePartitionTable(handle, disk->sectorSize).id + "\nvolume " +
           ProbeFileSystem(handle, 0, sizeBytes, disk->sectorSize).id + "\n";
}
