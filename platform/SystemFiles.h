// What the system tells in small text files, and who a path or device is to it.
#pragma once

#include "platform/ResultCode.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "/sys/block", "/dev/sda" or "/proc/self/mountinfo" where the system keeps them; below another root folder once one was
// set (tests, on a made-up system). Set before threads start: reading it takes no lock.
std::filesystem::path SystemPath(std::string_view absolutePath);
void SetSystemRoot(const std::filesystem::path& root);

// The first line without its end; empty when the file cannot be read.
std::string FirstLineOf(const std::filesystem::path& path);
// The decimal number that a file begins with; nothing when there is none.
std::optional<std::uint64_t> NumberIn(const std::filesystem::path& path);
// All lines, up to a bound that no table of the system reaches; none when the file cannot be read.
std::vector<std::string> LinesOf(const std::filesystem::path& path);

// Who a file is, whatever its name. Device numbers are written "8:17", as the system's own tables write them.
struct FileIdentity
{
    std::string deviceNumber;     // of the file system that it lies on
    std::uint64_t inode = 0;      // on that
    std::string ownDeviceNumber;  // of a block device: its own number; else empty
    std::uint64_t mountId = 0;    // the line of the mount table; 0 when the system does not tell
    bool isRegularFile = false;

    bool SameFile(const FileIdentity& other) const
    {
        return deviceNumber == other.deviceNumber && inode == other.inode;
    }
};

// Links are followed. The out parameter is untouched on failure.
[[nodiscard]] ResultCode IdentifyPath(const std::filesystem::path& path, FileIdentity& outIdentity);
// The number of a block device's node; empty when it is none.
std::string DeviceNumberOf(const std::filesystem::path& node);
