#include "recovery/metadata/FatGeometry.h"

#include "recovery/metadata/FileSystemRecognition.h"

ResultCode ReadFatGeometry(ByteView bootSector, FatGeometry& outGeometry)
{
    const std::uint32_t sectorSize = bootSector.U16(11);
    const std::uint32_t sectorsPerCluster = bootSector.U8(13);
    if (sectorSize == 0 || sectorSize % 512 != 0 || sectorsPerCluster == 0) {
        return ResultInvalidParameter;
    }
    const std::uint32_t fatCount = bootSector.U8(16);
    FatGeometry geometry;
    geometry.sectorSize = static_cast<std::int32_t>(sectorSize);
    geometry.sectorsPerCluster = sectorsPerCluster;
    geometry.reservedSectors = bootSector.U16(14);
    geometry.totalSectors32 = bootSector.U32(32);
    geometry.isFat32 = HasFat32Mark(bootSector);
    if (geometry.isFat32) {
        geometry.rootCluster = bootSector.U32(44);
        geometry.dataStart = fatCount * bootSector.U32(36) + geometry.reservedSectors;
    } else {
        geometry.dataStart =
            fatCount * bootSector.U16(22) + geometry.reservedSectors + FixedRootSectors;
    }
    outGeometry = geometry;
    return ResultSuccess;
}
