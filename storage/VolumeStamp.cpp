#include "storage/VolumeStamp.h"

#include "storage/DriveRegistry.h"
#include "storage/VolumeReading.h"
#include "storage/VolumeSpace.h"

#include <algorithm>

std::uint64_t
VolumeStamp(std::uint32_t diskNumber, std::uint64_t startLba, std::uint64_t sectorCount)
{
    OpenedSource drive;
    if (OpenDriveSource(diskNumber, drive) != ResultSuccess ||
        startLba > drive.sizeBytes / drive.sectorSize) {
        return 0;
    }
    const std::uint64_t startByte = startLba * drive.sectorSize;
    const std::uint64_t sectors =
        std::min(sectorCount, drive.sizeBytes / drive.sectorSize - startLba);
    VolumeSpace space;
    if (ReadVolumeSpace(*drive.reader, startByte, sectors * drive.sectorSize, space)) {
        return space.freeBytes;
    }
    const std::optional<BlockDevice> disk = DriveRegistry::Instance().Find(diskNumber);
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
