// The record of one found file or folder, as it stands in the main record file. Ours, so it is laid out
// as a packed structure; see docs/formats.md.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// Which engine wrote a record; it routes every later operation on the record.
inline constexpr std::uint32_t EngineKindFastNtfs = 0;
inline constexpr std::uint32_t EngineKindFastFat = 1;
inline constexpr std::uint32_t EngineKindProfessionalNtfs = 2;
inline constexpr std::uint32_t EngineKindProfessionalFat = 3;
inline constexpr std::uint32_t EngineKindCarved = 4;

inline constexpr std::uint32_t NoClusterBytes = 0xFFFFFFFF;  // carved records and lost folders
inline constexpr std::size_t NameCapacity = 260;             // with the ending NUL

// Fills a name field: the text up to its first NUL, cut to 259 bytes in its stem so that the last extension
// stays; the rest of the field is zeroed.
void StoreName(char (&field)[NameCapacity], std::string_view name);

#pragma pack(push, 1)
// 346 bytes, little-endian, no padding. Fields are taken by value: none of them is
// aligned, so what takes a reference (a container, std::min) gets a copy, std::uint32_t{record.NodeId}.
struct FileRecord
{
    std::uint16_t DriveLetter = 0;      // 0: letter, number or image id of the target
    std::uint32_t EngineKind = 0;       // 2
    std::uint32_t IsFolder = 0;         // 6: 0 file, 1 folder
    std::uint32_t InDeletedFolder = 0;  // 10: folders of the fast FAT engine only
    std::uint32_t HeadIntact = 0;       // 14: files: 1 when the first sector fits the extension
    std::uint32_t RecordNumber = 0;     // 18: 1-based place in the main record file
    std::uint32_t NodeId = 0;           // 22: FAT: first cluster; NTFS: record number; carved: 0
    std::uint32_t ClusterBytes = 0;     // 26
    std::uint64_t CreationTime = 0;     // 30: FILETIME
    std::uint64_t AccessTime = 0;       // 38
    std::uint64_t WriteTime = 0;        // 46
    std::uint64_t FileSize = 0;         // 54: bytes; 0 for folders
    std::uint64_t DataStart = 0;        // 62: FAT: sectors from partition start to cluster 2
    std::uint64_t EntrySector = 0;     // 70: LBA of the directory entry, NTFS record or carved head
    std::uint64_t PartitionStart = 0;  // 78: LBA
    char Name[NameCapacity] = {};      // 86: UTF-8, NUL-terminated

    // The name up to its NUL; never runs out of the field.
    std::string_view NameText() const
    {
        const std::string_view field(Name, NameCapacity);
        return field.substr(0, field.find('\0'));
    }
    void SetName(std::string_view name);
};

// 268 bytes: a folder's entry in the _DirInfo file.
struct DirInfoRecord
{
    std::uint32_t FolderId = 0;      // 0: the folder's NodeId
    std::uint32_t RecordNumber = 0;  // 4: of the folder's FileRecord
    char Name[NameCapacity] = {};    // 8: NUL-terminated

    std::string_view NameText() const
    {
        const std::string_view field(Name, NameCapacity);
        return field.substr(0, field.find('\0'));
    }
};
#pragma pack(pop)

static_assert(sizeof(FileRecord) == 346);
static_assert(offsetof(FileRecord, EngineKind) == 2);
static_assert(offsetof(FileRecord, CreationTime) == 30);
static_assert(offsetof(FileRecord, FileSize) == 54);
static_assert(offsetof(FileRecord, PartitionStart) == 78);
static_assert(offsetof(FileRecord, Name) == 86);
static_assert(sizeof(DirInfoRecord) == 268);

using FileRecordList = std::vector<FileRecord>;
