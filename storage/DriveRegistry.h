// Which device a disk number means. Linux has no drive numbers of its own, so the process gives them out.
#pragma once

#include "platform/BlockDevices.h"
#include "platform/FileHandle.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

// Process-wide, made on first use. Any thread may list, ask and open; what comes back are copies.
class DriveRegistry
{
public:
    // Numbers from here on are never given: 0x80 stands for an image file in the scan log.
    static constexpr std::uint32_t NumberLimit = 128;
    static constexpr std::uint32_t NoNumber = 0xFFFFFFFF;

    static DriveRegistry& Instance();

    // The number of a disk: the one that it has, else the lowest free one; NoNumber when all are taken. Another medium in
    // the same drive is another disk. What is known of the disk is renewed.
    std::uint32_t NumberOf(const BlockDevice& disk);
    // Numbers all of them in their order, so that the same disks get the same numbers in each run.
    void NumberAll(const std::vector<BlockDevice>& disks);
    // NumberOf for a node that stands in no list: a file in place of a device, a floppy.
    std::uint32_t NumberOf(const std::filesystem::path& node);
    // What is known of a disk; nothing for a number that was not given.
    std::optional<BlockDevice> Find(std::uint32_t diskNumber) const;
    // Empty for a number that was not given.
    std::filesystem::path DeviceOf(std::uint32_t diskNumber) const;
    // The number is free again; for a disk that has gone and that nothing found on it refers to any more.
    void Forget(std::uint32_t diskNumber);

    // Opens the disk for reading only. ResultFileNotFound for an unknown number, ResultNotConnected when another medium
    // is in the drive by now. Where the user may not read it, the opener with more rights is asked, once for each disk; who
    // wants the same disk meanwhile waits for the answer, and nobody else does.
    [[nodiscard]] ResultCode Open(std::uint32_t diskNumber, FileHandle& outHandle);

    // How a device is opened that the user may not read; none is asked at first.
    using PrivilegedOpener = std::function<ResultCode(const std::filesystem::path&, FileHandle&)>;
    void SetPrivilegedOpener(PrivilegedOpener opener);

private:
    // What an administrator has consented to, kept so that the user is asked for a password once. It outlives its entry
    // when the disk is forgotten while the question stands.
    struct Consent
    {
        std::mutex lock;  // held while the question stands
        FileHandle handle;
    };

    struct Entry
    {
        BlockDevice disk;
        std::filesystem::path node;
        std::shared_ptr<Consent> consent = std::make_shared<Consent>();
    };

    // Of these two the caller holds the lock.
    std::uint32_t FreeNumber() const;
    std::uint32_t NumberLocked(const BlockDevice& disk);
    // These two work on a copy of the entry.
    [[nodiscard]] static ResultCode CheckMedium(const Entry& entry);
    [[nodiscard]] static ResultCode
    OpenEntry(const Entry& entry, const PrivilegedOpener& opener, FileHandle& outHandle);

    mutable std::mutex m_lock;  // never held while a device is opened or somebody is asked
    std::map<std::uint32_t, Entry> m_entries;
    PrivilegedOpener m_privilegedOpener;
};
