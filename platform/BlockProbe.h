// What stands on a disk, as libblkid recognises it on an open descriptor: also where the kernel itself reads no
// partition table. Positions are in bytes throughout.
#pragma once

#include "platform/FileHandle.h"

#include <cstdint>
#include <string>
#include <vector>

struct ProbedPartition
{
    std::uint32_t number = 0;
    std::uint64_t startByte = 0;
    std::uint64_t byteCount = 0;
    std::uint8_t type = 0;  // of a DOS table; 0 in the others
    std::string typeGuid;   // of a GPT: lower case; another table may have a word here
    bool extended = false;  // holds logical partitions, not a file system
};

struct ProbedTable
{
    std::string kind;  // "dos", "gpt", ...; empty when the disk has no table
    std::string id;    // what the table calls the disk; often empty
    std::vector<ProbedPartition> partitions;
};

// The disk's main table, its entries in the table's order. What lies past the disk's end is listed too, but
// no more than 256 entries. sectorSize is
// the disk's own.
ProbedTable ProbePartitionTable(const FileHandle& disk, std::uint32_t sectorSize);

struct ProbedFileSystem
{
    // "NTFS", "FAT32", "FAT", "exFAT", or as libblkid spells it; empty when nothing is known
    std::string name;
    std::string label;  // UTF-8
    std::string id;     // serial number or UUID as text
    // And not swap space, a member of a volume group, an encrypted volume.
    bool isFileSystem = false;
};

// Of all that is recognised in the range NTFS is named first, then FAT, then what came first: on recovered disks two
// file systems in one place are common, and this is the order in which the engines ask.
ProbedFileSystem ProbeFileSystem(const FileHandle& disk,
                                 std::uint64_t startByte,
                                 std::uint64_t byteCount,
                                 std::uint32_t sectorSize);

// The name that is shown for a type and version as libblkid gives them.
std::string FileSystemDisplayName(std::string_view type, std::string_view version);
