// Which bytes of which devices a path's file system stands on: through partitions, loop devices, mapped volumes, arrays,
// file systems over several devices and those of user programs. Nothing is opened for it.
#pragma once

#include "platform/BlockDevices.h"
#include "platform/MountTable.h"
#include "platform/SystemFiles.h"

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

// A range of a disk, or of what stands for one.
struct StorageExtent
{
    std::string deviceNumber;  // "8:0", never that of a partition
    std::uint64_t startByte = 0;
    std::uint64_t byteCount = 0;

    bool Overlaps(std::uint64_t otherStart, std::uint64_t otherCount) const
    {
        return otherStart < startByte + byteCount && startByte < otherStart + otherCount;
    }
};

struct StorageBelow
{
    std::vector<StorageExtent> extents;
    std::vector<FileIdentity> imageFiles;  // files that a file system in it is mounted from
    bool complete = true;                  // false when the system did not tell all
};

// The system's tables as they were when it was read. Cheap enough to be read anew for each question.
class StorageMap
{
public:
    StorageMap();

    // Where the file system lies that holds a path, or the nearest folder above it that exists. Links are followed.
    StorageBelow OfPath(const std::filesystem::path& path) const;
    // Where a mounted file system lies.
    StorageBelow OfMount(const MountEntry& mount) const;
    // What a disk or partition stands on by its number, itself included.
    StorageBelow BelowDevice(const std::string& deviceNumber) const;
    // What a disk or partition is by its number: one extent; none when the number is not known.
    std::vector<StorageExtent> OfDevice(const std::string& deviceNumber) const;

    // The mount that holds a path; null when the system does not tell. Valid as long as the map.
    const MountEntry* MountHolding(const std::filesystem::path& path) const;

    // False when the system's list of devices could not be read.
    bool Listed() const { return m_listed; }
    const std::vector<BlockDevice>& Devices() const { return m_devices; }
    const std::vector<MountEntry>& Mounts() const { return m_mounts; }

private:
    struct Walk;
    void AddPath(Walk& walk, const std::filesystem::path& path) const;
    void AddMount(Walk& walk, const MountEntry& mount) const;
    bool AddSource(Walk& walk, const std::string& source) const;
    void AddPool(Walk& walk, const std::string& deviceNumber) const;
    void AddDevice(Walk& walk, const std::string& deviceNumber) const;
    void AddWhatIsBelow(Walk& walk, const BlockDevice& device) const;
    StorageBelow Finish(Walk& walk) const;
    const MountEntry* MountOf(const FileIdentity& identity) const;

    std::vector<BlockDevice> m_devices;
    std::vector<MountEntry> m_mounts;
    bool m_listed = false;
};
