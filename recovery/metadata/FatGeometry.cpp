#include "recovery/metadata/FatGeometry.h"

#include "recovery/metadata/BootSectors.h"

ResultCode ReadFatGeometry(ByteView bootSector, FatGeometry& outGeometry)
{
    const FatBootFields boot = ReadFatBootFields(bootSector);
    if (boot.bytesPerSector == 0 || boot.bytesPerSector % 512 != 0 || boot.sectorsPerCluster == 0) {
        return ResultInvalidParameter;
    }
    FatGeometry geometry;
    geometry.sectorSize = static_cast<std::int32_t>(boot.bytesPerSector);
    geometry.sectorsPerCluster = boot.sectorsPerCluster;
    geometry.reservedSectors = boot.reservedSectors;
    geometry.totalSectors32 = boot.sectors32;
    geometry.isFat32 = HasFat32Mark(bootSector);
    if (geometry.isFat32) {
        geometry.rootCluster = boot.rootCluster;
        geometry.dataStart = boot.fatCount * boot.fatSectors32 + geometry.reservedSectors;
    } else {
        geometry.dataStart =
            boot.fatCount * boot.fatSectors16 + geometry.reservedSectors + FixedRootSectors;
    }
    outGeometry = geometry;
    return ResultSuccess;
}
