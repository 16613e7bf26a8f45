#include "recovery/metadata/NtfsVolume.h"

#include "recovery/metadata/BootSectors.h"

namespace {

constexpr std::uint32_t SmallestSector = 512;
constexpr std::uint32_t LargestClusterSectors = 127;  // above, the signed byte is negative

}  // namespace

void SetNtfsSectorSize(std::uint32_t bytesPerSector, NtfsVolume& volume)
{
    volume.BytesPerSector = bytesPerSector;
    volume.SectorsPerRecord = bytesPerSector == SmallestSector ? 2 : 1;
    volume.RecordSize = volume.SectorsPerRecord * bytesPerSector;
}

ResultCode ReadNtfsVolume(ByteView bootSector, NtfsVolume& volume)
{
    const NtfsBootFields boot = ReadNtfsBootFields(bootSector);
    const std::uint32_t bytesPerSector =
        boot.bytesPerSector != 0 ? boot.bytesPerSector : SmallestSector;
    if (bytesPerSector % SmallestSector != 0 || boot.sectorsPerCluster == 0 ||
        boot.sectorsPerCluster > LargestClusterSectors) {
        return ResultInvalidParameter;
    }
    SetNtfsSectorSize(bytesPerSector, volume);
    volume.SectorsPerCluster = boot.sectorsPerCluster;
    // Wraps for a wild number; the place is then simply not found.
    volume.MftStartSector =
        SectorOfCluster(boot.mftCluster, volume.SectorsPerCluster, 1) + volume.PartitionStart;
    return ResultSuccess;
}
