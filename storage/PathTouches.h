// Whether writing to a path would write onto a source that is being recovered.
#pragma once

#include <cstdint>
#include <filesystem>

enum class Touching
{
    No,
    Yes,
    Unknown  // the system does not tell where all of the path's file system lies
};

// The path, or the nearest folder above it that exists, lies on these bytes of a disk of the DriveRegistry: also by way
// of partitions, loop devices, encryption, volume groups, arrays and programs that mount image files. The file that a loop
// device shows as a disk counts as that disk.
Touching PathTouches(const std::filesystem::path& path,
                     std::uint32_t diskNumber,
                     std::uint64_t startByte,
                     std::uint64_t byteCount);
// The path is that image file, or lies in a file system that is mounted from it. The image's own folder does not count.
Touching PathTouchesImage(const std::filesystem::path& path,
                          const std::filesystem::path& imageFile);
