#include "session/TargetPlace.h"

#include "storage/DiskGeometry.h"
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

ScanTarget UpToTheLastSector(const ScanTarget& target)
{
    ScanTarget whole = target;
    const auto disk = DriveRegistry::Instance().Find(target.diskNumber);
    const std::uint64_t sectors =
        disk && !target.IsImage() ? disk->sizeBytes / target.sectorSize : 0;
    if (target.startSector == 0 && sectors != 0 && target.sectorCount == GeometrySectors(sectors)) {
        whole.sectorCount = sectors;
    }
    return whole;
}
