#include "cli/TargetResolver.h"

#include "cli/TextForms.h"
#include "storage/DiskEnumerator.h"
#include "storage/DriveRegistry.h"

#include <algorithm>
#include <charconv>

namespace {

// What a volume that is no row of the list is found by.
constexpr char16_t DeviceLetter = 1;

Refusal TargetRefusal(const std::string& sentence)
{
    return {ExitStatus::TargetFailed, sentence};
}

std::optional<Refusal> ResolveNumber(const std::string& text, ScanTarget& outTarget)
{
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 1, end, number);
    if (error != std::errc() || stop != end) {
        return Refusal{ExitStatus::WrongUse,
                       Printable(text) + " is no target; give # and a number that 'lumivault-cli "
                                         "targets' shows, such as '#3'."};
    }
    DiskEnumerator enumerator;
    (void)enumerator.Enumerate();  // a list that cannot be had has no such number
    VolumeRecord volume;
    while (enumerator.Next(volume) == 1) {
        if (volume.Letter == number) {
            outTarget.Volume = std::make_unique<VolumeRecord>(volume);
            return std::nullopt;
        }
    }
    return TargetRefusal("there is no target #" + std::to_string(number) +
                         "; 'lumivault-cli targets' lists those that there are.");
}

std::optional<Refusal> UseRange(const std::string& text,
                                std::uint32_t diskNumber,
                                std::uint64_t startByte,
                                std::uint64_t byteCount,
                                ScanTarget& outTarget)
{
    if (byteCount == 0) {
        return TargetRefusal(Printable(text) + ": it holds no medium; put one in and try again.");
    }
    if (diskNumber == DriveRegistry::NoNumber) {
        return TargetRefusal(Printable(text) + ": there are too many disks.");
    }
    auto volume = std::make_unique<VolumeRecord>();
    volume->Letter = DeviceLetter;
    volume->DiskNumber = diskNumber;
    volume->TotalBytes = byteCount;
    const std::uint64_t sectorSize = SectorSizeOf(*volume);
    if (byteCount < sectorSize) {
        return TargetRefusal(Printable(text) +
                             ": it has less than one sector of its disk, so there is nothing in "
                             "it; give another partition, or the whole disk.");
    }
    volume->StartSector = startByte / sectorSize;
    volume->SectorCount = byteCount / sectorSize;
    outTarget.Volume = std::move(volume);
    return std::nullopt;
}

// The disk or partition with that node or number; a partition by its place on the disk.
std::optional<Refusal> ResolveDevice(const std::string& text,
                                     const StorageMap& storage,
                                     const std::string& deviceNumber,
                                     ScanTarget& outTarget)
{
    DriveRegistry::Instance().NumberAll(DisksToShow(storage.Devices()));
    const std::vector<StorageExtent> extents = storage.OfDevice(deviceNumber);
    for (const BlockDevice& disk : storage.Devices()) {
        if (!extents.empty() && disk.deviceNumber == extents.front().deviceNumber) {
            return UseRange(text, DriveRegistry::Instance().NumberOf(disk),
                            extents.front().startByte, extents.front().byteCount, outTarget);
        }
    }
    // A node that the system's tables do not have: it is taken as it stands.
    FileHandle handle;
    std::uint64_t sizeBytes = 0;
    ResultCode result = handle.OpenForReading(text);
    if (result == ResultSuccess) {
        result = handle.Size(&sizeBytes);
    }
    if (result != ResultSuccess) {
        return WhyNotOpened(text, result);
    }
    return UseRange(text, DriveRegistry::Instance().NumberOf(std::filesystem::path(text)), 0,
                    sizeBytes, outTarget);
}

// The number of the device that has this node; empty when none has.
std::string NumberOfNode(const StorageMap& storage, const std::filesystem::path& node)
{
    for (const BlockDevice& disk : storage.Devices()) {
        if (disk.Node() == node) {
            return disk.deviceNumber;
        }
        for (const KernelPartition& partition : disk.partitions) {
            if (BlockDevice::NodeOf(partition.name) == node) {
                return partition.deviceNumber;
            }
        }
    }
    return {};
}

}  // namespace

std::optional<Refusal> ResolveTarget(const std::string& text, ScanTarget& outTarget)
{
    if (text.starts_with('#')) {
        return ResolveNumber(text, outTarget);
    }
    // An earlier scan is found again by the image's path, wherever it was started from.
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(text, error);
    if (error) {
        return WhyNotOpened(text, ErrorFromErrno(error.value(), FileOperation::Open));
    }
    FileIdentity identity;
    if (const ResultCode result = IdentifyPath(path, identity)) {
        return WhyNotOpened(text, result);
    }
    const StorageMap storage;
    const std::string byNode = NumberOfNode(storage, path);
    if (!byNode.empty() || !identity.ownDeviceNumber.empty()) {
        return ResolveDevice(path.string(), storage,
                             byNode.empty() ? identity.ownDeviceNumber : byNode, outTarget);
    }
    if (!identity.isRegularFile) {
        return TargetRefusal(
            Printable(text) +
            ": it is neither a file nor a block device; give an image file or a device.");
    }
    FileHandle file;
    if (const ResultCode result = file.OpenForReading(path)) {
        return WhyNotOpened(text, result);
    }
    outTarget.ImagePath = path;
    outTarget.ImageId = ScanTarget::FirstImageId;
    return std::nullopt;
}

Refusal WhyNotOpened(const std::string& text, ResultCode why)
{
    const std::string name = Printable(text);
    switch (why) {
    case ResultFileNotFound:
    case ResultPathNotFound:
        return TargetRefusal(
            name + ": there is no such file or device; give the path of an image file, a block "
                   "device such as /dev/sdb1, or a number that 'lumivault-cli targets' shows.");
    case ResultAccessDenied:
        return TargetRefusal(
            name + ": you are not permitted to read it; run the command with the rights to read "
                   "the device, for example with sudo.");
    case ResultNotSupported:
        return TargetRefusal(
            name + ": you are not permitted to read it, and nothing can ask for an "
                   "administrator's password, since pkexec (package pkexec) or this program's "
                   "helper for it is not installed; run the command with sudo.");
    case ResultShortRead:
        return TargetRefusal(
            name + ": it is shorter than 16 KB, so it holds no volume; check that the image was "
                   "copied whole.");
    case ResultSuccess:
        return TargetRefusal(
            name + ": no file system that can be scanned was found at its start; give a single "
                   "partition (such as /dev/sdb1) in place of a whole disk, or an image of one.");
    default:
        return TargetRefusal(
            name + ": it cannot be read: " + ErrorText(why) +
            " Check the cable and the medium, or copy what can be read to an image and scan that.");
    }
}

std::uint32_t SectorSizeOf(const VolumeRecord& volume)
{
    const auto disk = DriveRegistry::Instance().Find(volume.DiskNumber);
    return disk ? disk->sectorSize : 512;
}

Touching PathTouchesTarget(const std::filesystem::path& path, const ScanTarget& target)
{
    if (!target.IsVolume()) {
        return PathTouchesImage(path, target.ImagePath);
    }
    const std::uint64_t sectorSize = SectorSizeOf(*target.Volume);
    return PathTouches(path, target.Volume->DiskNumber, target.Volume->StartSector * sectorSize,
                       target.Volume->SectorCount * sectorSize);
}
