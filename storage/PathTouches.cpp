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

}  // namespace

Touching PathTouches(const std::filesystem::path& path,
                     std::uint32_t diskNumber,
                     std::uint64_t startByte,
                     std::uint64_t byteCount)
{
    const BlockDevice* disk = DriveRegistry::Instance().Find(diskNumber);
    if (disk == nullptr) {
        return Touching::Unknown;
    }
    if (disk->deviceNumber.empty()) {
        return PathTouchesImage(path, DriveRegistry::Instance().DeviceOf(diskNumber));
    }
    const StorageBelow below = StorageMap().OfPath(path);
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
    const bool touches =
        std::any_of(below.imageFiles.begin(), below.imageFiles.end(),
                    [&image](const FileIdentity& file) { return file.SameFile(image); });
    return Judge(touches, below);
}
