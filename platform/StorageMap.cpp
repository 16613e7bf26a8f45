#include "platform/StorageMap.h"

#include "platform/Folders.h"

#include <algorithm>
#include <string_view>

namespace fs = std::filesystem;

namespace {

// A chain of devices and files that is deeper than this is no chain that a person has set up.
constexpr std::size_t MostSteps = 256;

// Where these are mounted from is another machine, or memory: no disk of this one.
constexpr std::string_view WithoutDisk[] = {"tmpfs",
                                            "ramfs",
                                            "devtmpfs",
                                            "proc",
                                            "sysfs",
                                            "devpts",
                                            "mqueue",
                                            "hugetlbfs",
                                            "cgroup",
                                            "cgroup2",
                                            "debugfs",
                                            "tracefs",
                                            "securityfs",
                                            "efivarfs",
                                            "bpf",
                                            "nfs",
                                            "nfs4",
                                            "cifs",
                                            "smb3",
                                            "smbfs",
                                            "ceph",
                                            "afs",
                                            "ncpfs",
                                            "fuse.sshfs",
                                            "fuse.rclone",
                                            "fuse.s3fs",
                                            "fuse.davfs",
                                            "davfs",
                                            "fuse.gvfsd-fuse",
                                            "fuse.portal"};

bool NeedsNoDisk(std::string_view type)
{
    return std::find(std::begin(WithoutDisk), std::end(WithoutDisk), type) != std::end(WithoutDisk);
}

// Numbers with a major part of 0 stand for no device.
bool IsRealDevice(std::string_view deviceNumber)
{
    return !deviceNumber.empty() && !deviceNumber.starts_with("0:");
}

}  // namespace

// What is still to be looked at, and what has been.
struct StorageMap::Walk
{
    StorageBelow found;
    std::vector<std::string> devices;
    std::vector<fs::path> paths;
    std::set<std::string> seen;

    bool IsNew(const std::string& what) { return seen.insert(what).second; }
};

StorageMap::StorageMap() : m_mounts(ReadMountTable(SystemPath("/proc/self/mountinfo")))
{
    if (std::optional<std::vector<BlockDevice>> devices = ReadBlockDevices()) {
        m_devices = std::move(*devices);
        m_listed = true;
    }
}

StorageBelow StorageMap::OfPath(const fs::path& path) const
{
    Walk walk;
    walk.paths.push_back(path);
    return Finish(walk);
}

StorageBelow StorageMap::OfMount(const MountEntry& mount) const
{
    Walk walk;
    AddMount(walk, mount);
    return Finish(walk);
}

StorageBelow StorageMap::BelowDevice(const std::string& deviceNumber) const
{
    Walk walk;
    walk.devices.push_back(deviceNumber);
    return Finish(walk);
}

std::vector<StorageExtent> StorageMap::OfDevice(const std::string& deviceNumber) const
{
    for (const BlockDevice& device : m_devices) {
        if (device.deviceNumber == deviceNumber) {
            return {{deviceNumber, 0, device.sizeBytes}};
        }
        for (const KernelPartition& partition : device.partitions) {
            if (partition.deviceNumber == deviceNumber) {
                return {{device.deviceNumber, partition.startByte, partition.byteCount}};
            }
        }
    }
    return {};
}

StorageBelow StorageMap::Finish(Walk& walk) const
{
    std::size_t steps = 0;
    while ((!walk.devices.empty() || !walk.paths.empty()) && ++steps <= MostSteps) {
        if (!walk.devices.empty()) {
            const std::string device = walk.devices.back();
            walk.devices.pop_back();
            AddDevice(walk, device);
        } else {
            const fs::path path = walk.paths.back();
            walk.paths.pop_back();
            AddPath(walk, path);
        }
    }
    walk.found.complete = walk.found.complete && steps <= MostSteps;
    return std::move(walk.found);
}

void StorageMap::AddPath(Walk& walk, const fs::path& path) const
{
    FileIdentity identity;
    if (IdentifyPath(NearestExisting(path), identity) != ResultSuccess) {
        walk.found.complete = false;
        return;
    }
    // Several file systems show a number of their own in place of their device's.
    if (IsRealDevice(identity.deviceNumber) && !OfDevice(identity.deviceNumber).empty()) {
        walk.devices.push_back(identity.deviceNumber);
        return;
    }
    if (const MountEntry* mount = MountOf(identity)) {
        AddMount(walk, *mount);
    } else {
        walk.found.complete = false;
    }
}

const MountEntry* StorageMap::MountOf(const FileIdentity& identity) const
{
    const auto byId = [&identity](const MountEntry& mount) {
        return identity.mountId != 0 && mount.id == identity.mountId;
    };
    const auto byNumber = [&identity](const MountEntry& mount) {
        return mount.deviceNumber == identity.deviceNumber;
    };
    auto found = std::find_if(m_mounts.begin(), m_mounts.end(), byId);
    if (found == m_mounts.end()) {
        found = std::find_if(m_mounts.begin(), m_mounts.end(), byNumber);
    }
    return found != m_mounts.end() ? &*found : nullptr;
}

const MountEntry* StorageMap::MountHolding(const fs::path& path) const
{
    FileIdentity identity;
    return IdentifyPath(NearestExisting(path), identity) == ResultSuccess ? MountOf(identity)
                                                                          : nullptr;
}

void StorageMap::AddMount(Walk& walk, const MountEntry& mount) const
{
    if (NeedsNoDisk(mount.type)) {
        return;
    }
    if (mount.type == "overlay") {
        const std::string upper = MountOption(mount, "upperdir");
        if (!upper.starts_with('/') || !PathExists(upper)) {
            // Written to outside of what this process can see, told as a path from a folder that nobody knows any more,
            // or not writable at all.
            walk.found.complete = false;
        } else if (walk.IsNew(upper)) {
            walk.paths.emplace_back(upper);
        }
        return;
    }
    if (IsRealDevice(mount.deviceNumber)) {
        walk.devices.push_back(mount.deviceNumber);
        return;
    }
    if (!AddSource(walk, mount.source)) {
        walk.found.complete = false;
    }
}

// The source of a mount: a device, or an image file that a program of the user's has mounted.
bool StorageMap::AddSource(Walk& walk, const std::string& source) const
{
    FileIdentity identity;
    if (!source.starts_with('/') || IdentifyPath(source, identity) != ResultSuccess) {
        return false;
    }
    if (!identity.ownDeviceNumber.empty()) {
        AddPool(walk, identity.ownDeviceNumber);
        return true;
    }
    if (!identity.isRegularFile) {
        return false;
    }
    if (walk.IsNew(source)) {
        walk.found.imageFiles.push_back(identity);
        walk.paths.emplace_back(source);
    }
    return true;
}

// One device, and with it all the others of the file system that it is a part of.
void StorageMap::AddPool(Walk& walk, const std::string& deviceNumber) const
{
    walk.devices.push_back(deviceNumber);
    std::error_code error;
    fs::directory_iterator pool(SystemPath("/sys/fs/btrfs"), error);
    for (; !error && pool != fs::directory_iterator(); pool.increment(error)) {
        std::vector<std::string> members;
        std::error_code inner;
        fs::directory_iterator member(pool->path() / "devices", inner);
        for (; !inner && member != fs::directory_iterator(); member.increment(inner)) {
            members.push_back(FirstLineOf(member->path() / "dev"));
        }
        if (std::find(members.begin(), members.end(), deviceNumber) != members.end()) {
            walk.devices.insert(walk.devices.end(), members.begin(), members.end());
        }
    }
}

void StorageMap::AddDevice(Walk& walk, const std::string& deviceNumber) const
{
    if (!walk.IsNew(deviceNumber)) {
        return;
    }
    const std::vector<StorageExtent> extents = OfDevice(deviceNumber);
    if (extents.empty()) {
        walk.found.complete = false;
        return;
    }
    walk.found.extents.insert(walk.found.extents.end(), extents.begin(), extents.end());
    // Of a partition's disk only what lies below it counts: the disk's other partitions are not touched.
    for (const BlockDevice& device : m_devices) {
        if (device.deviceNumber == extents.front().deviceNumber) {
            AddWhatIsBelow(walk, device);
        }
    }
}

void StorageMap::AddWhatIsBelow(Walk& walk, const BlockDevice& device) const
{
    for (const std::string& slave : device.slaves) {
        walk.devices.push_back(
            FirstLineOf(SystemPath("/sys/block/" + device.name) / "slaves" / slave / "dev"));
    }
    if (device.backingFile.empty() || !walk.IsNew(device.backingFile)) {
        return;
    }
    FileIdentity identity;
    if (IdentifyPath(device.backingFile, identity) != ResultSuccess) {
        walk.found.complete = false;  // removed since, or on a file system that is not visible here
        return;
    }
    if (!identity.ownDeviceNumber.empty()) {
        walk.devices.push_back(identity.ownDeviceNumber);
        return;
    }
    walk.found.imageFiles.push_back(identity);
    walk.paths.emplace_back(device.backingFile);
}
