#include "recovery/metadata/NtfsVolume.h"

namespace {

constexpr std::uint32_t SmallestSector = 512;
constexpr std::uint8_t LargestClusterSectors = 127;  // above, the signed byte is negative

}  // namespace

void SetNtfsSectorSize(std::uint32_t bytesPerSector, NtfsVolume& volume)
{
    volume.BytesPerSector = bytesPerSector;
    volume.SectorsPerRecord = bytesPerSector == SmallestSector ? 2 : 1;
    volume.RecordSize = volume.SectorsPerRecord * bytesPerSector;
}

ResultCode ReadNtfsVolume(ByteView boot, NtfsVolume& volume)
{
    const std::uint32_t stated = boot.U16(11);
    const std::uint32_t bytesPerSector = stated != 0 ? stated : SmallestSector;
    const std::uint8_t sectorsPerCluster = boot.U8(13);
    if (bytesPerSector % SmallestSector != 0 || sectorsPerCluster == 0 ||
        sectorsPerCluster > LargestClusterSectors) {
        return ResultInvalidParameter;
    }
    SetNtfsSectorSize(bytesPerSector, volume);
    volume.SectorsPerCluster = sectorsPerCluster;
    // Wraps for a wild number; the place is then simply not found.
    volume.MftStartSector =
        SectorOfCluster(boot.U64(48), volume.SectorsPerCluster, 1) + volume.PartitionStart;
    return ResultSuccess;
}
