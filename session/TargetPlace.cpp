#include "session/TargetPlace.h"

#include "storage/DriveRegistry.h"

Touching PathTouchesTarget(const std::filesystem::path& path, const ScanTarget& target)
{
    return target.IsImage()
               ? PathTouchesImage(path, target.imagePath)
               : PathTouches(path, target.diskNumber, target.StartByte(), target.ByteCount());
}

std::uint32_t SectorSizeOfDisk(std::uint32_t diskNumber)
{
    const auto disk = DriveRegistry::Instance().Find(diskNumber);
    return disk ? disk->sectorSize : 512;
}
