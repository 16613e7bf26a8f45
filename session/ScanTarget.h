// What a scan reads: a range of a disk, an image file, or a range of one. Plain data: a copy stays good when the disk goes away.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>
#include <string>

struct ScanTarget
{
    static constexpr char16_t FirstImageId = 1001;  // above the numbers that rows get

    std::filesystem::path imagePath;  // empty for a range of a disk
    char16_t letter =
        0;  // what its records carry, so that they find it again: a row's number, or an image's id
    std::uint32_t diskNumber = 0;
    std::uint64_t startSector = 0;  // in the disk's own sectors; of 512 bytes in an image
    std::uint64_t sectorCount = 0;  // of an image 0: all of it
    std::uint32_t sectorSize = 512;

    bool IsImage() const { return !imagePath.empty(); }
    bool IsWholeImage() const { return IsImage() && sectorCount == 0; }
    std::uint64_t StartByte() const { return startSector * sectorSize; }
    std::uint64_t ByteCount() const { return sectorCount * sectorSize; }
};

enum class TargetFault
{
    None,
    NotANumber,
    NoSuchNumber,
    NoSuchPart,  // with that number, in a table of partitions; or there is no table
    NoMedium,
    TooManyDisks,
    LessThanASector,
    NotScannable,  // neither a file nor a block device
    UnknownFileSystem,
    CannotBeOpened,  // see why
    OutOfMemory
};

// Why a target cannot be used.
struct TargetRefusal
{
    TargetFault fault = TargetFault::None;
    std::string name;          // of what was asked for
    std::uint32_t number = 0;  // with NoSuchNumber and NoSuchPart
    ResultCode why = ResultSuccess;
    bool isImage = false;  // as far as whoever refuses knows
};

// What the result of an opening says of the target; success, without an engine, stands for an unknown file system.
TargetRefusal WhyNotOpened(const std::string& name, ResultCode why);
