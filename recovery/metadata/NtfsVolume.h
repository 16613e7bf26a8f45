// The figures of an NTFS volume, as its boot sector gives them.
#pragma once

#include "platform/ByteView.h"
#include "platform/ResultCode.h"
#include "recovery/metadata/NtfsRecordCodec.h"

#include <cstdint>

struct NtfsVolume
{
    std::uint64_t PartitionStart = 0;  // LBA
    std::uint64_t SectorCount = 0;     // of the target
    std::uint64_t MftStartSector = 0;  // LBA of record 0
    std::uint32_t BytesPerSector = 512;
    std::uint32_t SectorsPerRecord = 2;
    std::uint32_t RecordSize = 1024;
    std::uint32_t SectorsPerCluster = 8;

    std::uint32_t ClusterBytes() const { return SectorsPerCluster * BytesPerSector; }
};

// A record is 1024 bytes on sectors of 512, else one sector; the boot sector's own figure is not asked.
void SetNtfsSectorSize(std::uint32_t bytesPerSector, NtfsVolume& volume);

// Takes the sizes and the table's place from a boot sector; PartitionStart is set. ResultInvalidParameter when the
// sector size is no multiple of 512 or the cluster size, a signed byte, is not above 0.
[[nodiscard]] ResultCode ReadNtfsVolume(ByteView bootSector, NtfsVolume& volume);

// The sector of a cluster, counted from the volume's start: the product is taken modulo 2^64, then divided as a signed
// number. In bytes, as copies of records count, a wild cluster leads elsewhere than in sectors of one unit each.
inline constexpr std::uint64_t
SectorOfCluster(std::uint64_t lcn, std::uint32_t clusterUnits, std::uint32_t sectorUnits)
{
    const auto position = static_cast<std::int64_t>(lcn * clusterUnits);
    return static_cast<std::uint64_t>(position / std::int64_t{sectorUnits});
}

// How many sectors after the previous run, or, modulo 2^64, before it, a run begins: whoever walks a list adds them up.
inline constexpr std::uint64_t SectorsToRun(const NtfsRun& run, std::uint32_t sectorsPerCluster)
{
    return SectorOfCluster(static_cast<std::uint64_t>(run.Offset), sectorsPerCluster, 1);
}
