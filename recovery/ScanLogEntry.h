// One scan in the file "config" of the scan log: which target it was of, how far it got, where its stores lie.
#pragma once

#include "storage/ScanSource.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>

#pragma pack(push, 1)
// 1120 bytes, little-endian. Texts are UTF-16, ended by a zero unit.
struct ScanLogEntry
{
    static constexpr std::size_t PathUnits = 260;

    std::uint32_t diskNumber = 0;   // 0: ImageDiskNumber for an image
    std::uint32_t reserved = 0;     // 4
    std::uint64_t startLba = 0;     // 8
    std::uint64_t sectorCount = 0;  // 16
    std::uint64_t rangeStart = 0;   // 24: current range, sectors from the target's start
    std::uint64_t rangeLength = 0;  // 32: 0 when the scan is complete
    std::uint64_t position = 0;     // 40: sectors done inside the range
    std::uint64_t sectorsDone = 0;  // 48: for the progress display
    std::uint64_t filesFound = 0;   // 56
    std::uint64_t volumeStamp =
        0;  // 64: of a drive target, as VolumeStamp drew it when it was scanned
    std::uint64_t imageTime = 0;         // 72: an image's last write time, FILETIME
    char16_t imagePath[PathUnits] = {};  // 80: empty for a drive
    char16_t logFolder[PathUnits] = {};  // 600: with the ending separator
};
#pragma pack(pop)

static_assert(sizeof(ScanLogEntry) == 1120);
static_assert(offsetof(ScanLogEntry, volumeStamp) == 64);
static_assert(offsetof(ScanLogEntry, imagePath) == 80);
static_assert(offsetof(ScanLogEntry, logFolder) == 600);

// The paths of an entry; a text without an end is cut.
std::filesystem::path ImagePathOf(const ScanLogEntry& entry);
std::filesystem::path LogFolderOf(const ScanLogEntry& entry);
// The entry is of that image or drive, whatever range of it: the two never meet.
bool IsOfSource(const ScanLogEntry& entry, const ScanIdentity& target);
// Store a path. False, with the entry untouched, for one of more than 259 units or one that is no UTF-8: cut or changed it
// would name something else.
[[nodiscard]] bool SetImagePath(ScanLogEntry& entry, const std::filesystem::path& path);
[[nodiscard]] bool SetLogFolder(ScanLogEntry& entry, const std::filesystem::path& folder);
