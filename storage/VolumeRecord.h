// One row of the list of what can be scanned: a partition, a gap between partitions, a whole disk.
#pragma once

#include <cstdint>
#include <string>

// Plain data, copied by value. Texts are UTF-8.
struct VolumeRecord
{
    static constexpr char16_t NoLetter = u'*';
    static constexpr std::uint32_t Unknown = 0xFFFFFFFF;

    char16_t Letter = NoLetter;  // what a record finds its target by: the entry's running number
    std::uint8_t PartitionType =
        0;  // 7 NTFS, 11 FAT32, 6 FAT, else the table's byte; 0 for gaps and whole disks
    std::uint32_t DiskNumber = Unknown;       // of the DriveRegistry
    std::uint32_t PartitionNumber = Unknown;  // in the table; 0 for a file system on the bare disk
    std::uint64_t TotalBytes = 0;             // as the file system counts, else the length
    std::uint64_t UsedBytes = 0;
    std::uint64_t FreeBytes = 0;    // 0 where no file system tells
    bool SpaceKnown = false;        // a file system has told the three
    std::uint64_t StartSector = 0;  // on the disk, in the disk's own sectors
    std::uint64_t SectorCount = 0;
    std::string FileSystemName;  // "NTFS", "FAT32", "FAT", "ext4", ...
    std::string RootPath;  // where it is mounted, with a separator at the end; empty when it is not
    std::string VolumeLabel;
};

// The same place on the same disk.
inline bool IsSameVolume(const VolumeRecord& left, const VolumeRecord& right)
{
    return left.DiskNumber == right.DiskNumber && left.StartSector == right.StartSector;
}
