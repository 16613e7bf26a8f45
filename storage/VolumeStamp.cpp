#include "storage/VolumeStamp.h"

#include "storage/DriveRegistry.h"
#include "storage/VolumeReading.h"
#include "storage/VolumeSpace.h"

#include <algorithm>

std::uint64_t VolumeStamp(const ScanSource& drive)
{
    const std::uint64_t driveSectors = drive.TotalSectors();
    if (drive.StartLba() > driveSectors) {
        return 0;
    }
    const std::uint64_t startByte = drive.StartLba() * drive.SectorSize();
    const std::uint64_t sectors = std::min(drive.SectorCount(), driveSectors - drive.StartLba());
    VolumeSpace space;
    if (ReadVolumeSpace(drive.Reader(), startByte, sectors * drive.SectorSize(), space)) {
        return space.freeBytes;
    }
    const std::optional<BlockDevice> disk =
        DriveRegistry::Instance().Find(drive.Identity().diskNumber);
    const StorageMap storage;
    const MountEntry* mount = disk ? FindMountAt(storage, disk->deviceNumber, startByte) : nullptr;
    const bool told = mount != nullptr && FileSystemSpace(mount->mountPoint, &space.totalBytes,
                                                          &space.freeBytes) == ResultSuccess;
    return told ? space.freeBytes : 0;
}

ResultCode ImageTime(const std::filesystem::path& imagePath, std::uint64_t* outFileTime)
{
    FileHandle handle;
    if (const ResultCode result = handle.OpenForReading(imagePath)) {
        return result;
    }
    return handle.WriteTime(outFileTime);
}
