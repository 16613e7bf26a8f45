#include "storage/PathTouches.h"

#include "platform/StorageMap.h"
#include "storage/DriveRegistry.h"

#include <algorithm>

namespace {

Touching Judge(bool touches, const StorageBelow& below)
{
    if (touches) {
        return Touching::Yes;
    }
    return below.complete ? Touching::No : Touching::Unknown;
}

bool IsOneOf(const std::filesystem::path& path, const std::vector<FileIdentity>& files)
{
    FileIdentity identity;
    return IdentifyPath(path, identity) == ResultSuccess &&
           std::any_of(files.begin(), files.end(),
                       [&identity](const FileIdentity& file) { return file.SameFile(identity); });
}

}  // namespace

Touching PathTouches(const std::filesystem::path& path,
                     std::uint32_t diskNumber,
                     std::uint64_t startByte,
                     std::uint64_t byteCount)
{
    const std::optional<BlockDevice> disk = DriveRegistry::Instance().Find(diskNumber);
    if (!disk) {
        return Touching::Unknown;
    }
    if (disk->deviceNumber.empty()) {
        return PathTouchesImage(path, DriveRegistry::Instance().DeviceOf(diskNumber));
    }
    const StorageMap storage;
    if (IsOneOf(path, storage.BelowDevice(disk->deviceNumber).imageFiles)) {
        return Touching::Yes;
    }
    const StorageBelow below = storage.OfPath(path);
    const bool touches =
        std::any_of(below.extents.begin(), below.extents.end(), [&](const StorageExtent& extent) {
            return extent.deviceNumber == disk->deviceNumber &&
                   extent.Overlaps(startByte, byteCount);
        });
    return Judge(touches, below);
}

Touching PathTouchesImage(const std::filesystem::path& path, const std::filesystem::path& imageFile)
{
    FileIdentity image;
    if (IdentifyPath(imageFile, image) != ResultSuccess) {
        return Touching::Unknown;
    }
    const StorageBelow below = StorageMap().OfPath(path);
    return Judge(IsOneOf(imageFile, below.imageFiles) || IsOneOf(path, {image}), below);
}
