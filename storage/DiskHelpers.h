// Single questions about disks and destinations. Each opens what it needs and closes it again.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>
#include <string>

// The medium can be taken out. False also for an unknown disk.
bool IsRemovable(std::uint32_t diskNumber);
// The disk's length in bytes. *out is untouched on failure.
[[nodiscard]] ResultCode GetDiskLength(std::uint32_t diskNumber, std::uint64_t* out);
// The bytes that this user may still write to the file system that holds a path, which need not exist yet.
[[nodiscard]] ResultCode GetFreeBytes(const std::filesystem::path& path, std::uint64_t* out);
// "NTFS", "FAT32", "FAT", "exFAT", "ext4", ... of the file system that holds a path; empty when it is not known.
std::string GetFileSystemName(const std::filesystem::path& path);
// The size of a file that can be read.
[[nodiscard]] ResultCode GetFileSize(const std::filesystem::path& path, std::uint64_t* out);
// What tells a disk from another one in the same drive: its serial number, size, and the name that its partition table or
// file system gives it. Empty for an unknown disk.
std::string DiskIdentity(std::uint32_t diskNumber);
