// The fields of FAT and NTFS boot sectors as they stand, none of them judged. What they must be differs: recognition goes by
// one rule, the engines put up with nearly anything, and figures that are shown come from sound volumes alone.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>

struct FatBootFields
{
    std::uint32_t bytesPerSector = 0;
    std::uint32_t sectorsPerCluster = 0;
    std::uint32_t reservedSectors = 0;
    std::uint32_t fatCount = 0;
    std::uint32_t rootEntries = 0;
    std::uint32_t sectors16 = 0;  // of the volume; 0 where they need 32 bits
    std::uint32_t sectors32 = 0;
    std::uint32_t fatSectors16 = 0;  // of one FAT; 0 on FAT32
    std::uint32_t fatSectors32 = 0;
    std::uint32_t rootCluster = 0;  // FAT32 alone

    std::uint32_t FatSectors() const { return fatSectors16 != 0 ? fatSectors16 : fatSectors32; }
};

inline FatBootFields ReadFatBootFields(ByteView sector)
{
    FatBootFields boot;
    boot.bytesPerSector = sector.U16(11);
    boot.sectorsPerCluster = sector.U8(13);
    boot.reservedSectors = sector.U16(14);
    boot.fatCount = sector.U8(16);
    boot.rootEntries = sector.U16(17);
    boot.sectors16 = sector.U16(19);
    boot.fatSectors16 = sector.U16(22);
    boot.sectors32 = sector.U32(32);
    boot.fatSectors32 = sector.U32(36);
    boot.rootCluster = sector.U32(44);
    return boot;
}

struct NtfsBootFields
{
    std::uint32_t bytesPerSector = 0;
    std::uint32_t sectorsPerCluster = 0;  // above 128 a negative power of two, to some
    std::uint64_t sectors = 0;
    std::uint64_t mftCluster = 0;
    std::uint32_t recordSize = 0;  // in clusters, or above 127 a negative power of two, in bytes
};

inline NtfsBootFields ReadNtfsBootFields(ByteView sector)
{
    NtfsBootFields boot;
    boot.bytesPerSector = sector.U16(11);
    boot.sectorsPerCluster = sector.U8(13);
    boot.sectors = sector.U64(40);
    boot.mftCluster = sector.U64(48);
    boot.recordSize = sector.U8(64);
    return boot;
}

inline bool HasBootMark(ByteView sector)
{
    return sector.Matches(510, "\x55\xAA");
}

inline bool HasNtfsName(ByteView sector)
{
    return sector.Matches(3, "NTFS    ");
}

// "FAT32   " at 82, which is what the FAT engines go by once the boot sector is taken.
inline bool HasFat32Mark(ByteView sector)
{
    return sector.Matches(82, "FAT32   ");
}
