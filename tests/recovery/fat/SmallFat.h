// A FAT32 volume of a few hundred sectors, made byte by byte for what no tool would write. One sector a cluster.
#pragma once

#include "tests/support/Bytes.h"

#include <cstring>
#include <string_view>

class SmallFat
{
public:
    static constexpr std::uint32_t FatSector = 32;
    static constexpr std::uint32_t DataSector = 40;  // cluster 2
    static constexpr std::uint32_t Sectors = 512;
    static constexpr std::size_t SectorSize = 512;
    static constexpr std::uint8_t Deleted = 0xE5;

    explicit SmallFat(std::uint32_t rootCluster = 2) : bytes(Sectors * SectorSize)
    {
        Put(11, Bytes("00 02 01 20 00 01"));
        Put32(32, Sectors);
        Put32(36, 8);
        Put32(44, rootCluster);
        Put(82, Bytes("'FAT32   '"));
        Put(510, Bytes("55 AA"));
    }

    void SetFat(std::uint32_t cluster, std::uint32_t entry)
    {
        Put32(FatSector * SectorSize + cluster * 4, entry);
    }
    void PutCluster(std::uint32_t cluster, const ByteVector& content)
    {
        Put(Offset(cluster), content);
    }
    // An entry of a folder's cluster; the 11 name bytes as they stand on disk.
    void Entry(std::uint32_t cluster,
               std::size_t index,
               std::string_view name,
               std::uint8_t attributes,
               std::uint32_t firstCluster,
               std::uint32_t size,
               bool deleted = false)
    {
        const std::size_t at = Offset(cluster) + index * 32;
        std::memcpy(bytes.data() + at, name.data(), 11);
        if (deleted) {
            bytes[at] = Deleted;
        }
        bytes[at + 11] = attributes;
        constexpr std::uint16_t Day = (2020 - 1980) << 9 | 5 << 5 | 17;
        for (const std::size_t date : {16u, 18u, 24u}) {
            Put16(at + date, Day);
        }
        Put16(at + 20, static_cast<std::uint16_t>(firstCluster >> 16));
        Put16(at + 26, static_cast<std::uint16_t>(firstCluster));
        Put32(at + 28, size);
    }
    void DotEntries(std::uint32_t cluster, std::uint32_t parent)
    {
        Entry(cluster, 0, ".          ", 0x10, cluster, 0);
        Entry(cluster, 1, "..         ", 0x10, parent, 0);
    }
    // A piece of a long name, thirteen equal letters.
    void Piece(std::uint32_t cluster, std::size_t index, std::uint8_t ordinal, char letter)
    {
        const std::size_t at = Offset(cluster) + index * 32;
        for (const std::size_t unit :
             {1u, 3u, 5u, 7u, 9u, 14u, 16u, 18u, 20u, 22u, 24u, 28u, 30u}) {
            Put16(at + unit, static_cast<std::uint8_t>(letter));
        }
        bytes[at] = ordinal;
        bytes[at + 11] = 0x0F;
    }

    static std::size_t Offset(std::uint32_t cluster)
    {
        return (DataSector + cluster - 2) * SectorSize;
    }
    void Put(std::size_t at, const ByteVector& content)
    {
        std::memcpy(bytes.data() + at, content.data(), content.size());
    }
    void Put16(std::size_t at, std::uint16_t value)
    {
        std::memcpy(bytes.data() + at, &value, sizeof value);
    }
    void Put32(std::size_t at, std::uint32_t value)
    {
        std::memcpy(bytes.data() + at, &value, sizeof value);
    }

    ByteVector bytes;
};
