// Which file systems are mounted where, and what a mounted one says of itself.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct MountEntry
{
    std::uint64_t id = 0;
    std::uint64_t parentId = 0;  // of the mount that it stands on
    std::string deviceNumber;    // "8:17"; "0:42" where no single device stands behind
    std::string mountPoint;
    std::string type;          // as the kernel names it
    std::string source;        // a device node, an image file, or anything
    std::string superOptions;  // separated by commas, still escaped
};

// The table in a file of the form of /proc/self/mountinfo. Lines that make no sense are left out.
std::vector<MountEntry> ReadMountTable(const std::filesystem::path& path);
// Another file system is mounted over it or over a folder above it, so its mount point leads to that one.
bool IsCovered(const MountEntry& mount, const std::vector<MountEntry>& mounts);
// The name that is shown for a mounted file system: "NTFS", "FAT32", "exFAT", or the kernel's own. Of a FAT volume and of
// one that a program mounts it can be another of the family: the volume itself knows better.
std::string MountedFileSystemName(const MountEntry& mount);
// The value of one option, such as upperdir, unescaped; empty when it is not there.
std::string MountOption(const MountEntry& mount, std::string_view name);

// Size and free bytes, for this user, of the file system that holds a path. Hangs as long as the file system does, so
// ask only for those of local devices and for folders that the user chose.
[[nodiscard]] ResultCode FileSystemSpace(const std::filesystem::path& path,
                                         std::uint64_t* outTotalBytes,
                                         std::uint64_t* outFreeBytes);
// Has the file system that holds a path write out what it keeps in memory.
[[nodiscard]] ResultCode SyncFileSystem(const std::filesystem::path& path);
