// Which device a disk number means. Linux has no drive numbers of its own, so the process gives them out.
#pragma once

#include "platform/FileHandle.h"

#include <cstdint>
#include <filesystem>
#include <map>

// Process-wide, made on first use, not locked: one thread at a time lists or opens drives.
class DriveRegistry
{
public:
    // Numbers from here on are never given: 0x80 stands for an image file in the scan log.
    static constexpr std::uint32_t NumberLimit = 128;
    static constexpr std::uint32_t NoNumber = 0xFFFFFFFF;

    static DriveRegistry& Instance();

    // The number of a device node; the lowest free one when it is new, NoNumber when all are taken.
    std::uint32_t NumberOf(const std::filesystem::path& device);
    // Empty for a number that was not given.
    std::filesystem::path DeviceOf(std::uint32_t diskNumber) const;
    void Forget(std::uint32_t diskNumber);
    // Opens the device for reading only. ResultFileNotFound for an unknown number.
    [[nodiscard]] ResultCode Open(std::uint32_t diskNumber, FileHandle& outHandle) const;

private:
    std::map<std::uint32_t, std::filesystem::path> m_devices;
};
