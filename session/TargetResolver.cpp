#include "session/TargetResolver.h"

#include "platform/StorageMap.h"
#include "session/Guard.h"
#include "session/TargetList.h"
#include "session/TargetParts.h"
#include "session/TargetPlace.h"
#include "storage/DriveRegistry.h"

#include <charconv>

namespace {

// What a range of a disk that is no row of the list is found by.
constexpr char16_t DeviceLetter = 1;

TargetRefusal Refuse(const std::string& name, TargetFault fault)
{
    return {fault, name};
}

ResolvedTarget ResolveNumber(const std::string& text, TargetLister& lister)
{
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 1, end, number);
    if (error != std::errc() || stop != end) {
        return Refuse(text, TargetFault::NotANumber);
    }
    const TargetList list = lister.List({});  // one that cannot be had has no such number
    std::vector<TargetRow> rows = list.rows;
    const std::vector<TargetRow> wholes = WholeDiskRows(list);
    rows.insert(rows.end(), wholes.begin(), wholes.end());
    for (const TargetRow& row : rows) {
        if (row.number == number) {
            return UpToTheLastSector(TargetOf(row));
        }
    }
    TargetRefusal refusal = Refuse(text, TargetFault::NoSuchNumber);
    refusal.number = number;
    return refusal;
}

ResolvedTarget UseRange(const std::string& text,
                        std::uint32_t diskNumber,
                        std::uint64_t startByte,
                        std::uint64_t byteCount)
{
    if (byteCount == 0) {
        return Refuse(text, TargetFault::NoMedium);
    }
    if (diskNumber == DriveRegistry::NoNumber) {
        return Refuse(text, TargetFault::TooManyDisks);
    }
    ScanTarget target;
    target.letter = DeviceLetter;
    target.diskNumber = diskNumber;
    target.sectorSize = SectorSizeOfDisk(diskNumber);
    if (byteCount < target.sectorSize) {
        return Refuse(text, TargetFault::LessThanASector);
    }
    target.startSector = startByte / target.sectorSize;
    target.sectorCount = byteCount / target.sectorSize;
    return target;
}

// The disk or partition with that node or number; a partition by its place on the disk.
ResolvedTarget
ResolveDevice(const std::string& text, const StorageMap& storage, const std::string& deviceNumber)
{
    DriveRegistry& registry = DriveRegistry::Instance();
    registry.NumberAll(DisksToShow(storage.Devices()));
    const std::vector<StorageExtent> extents = storage.OfDevice(deviceNumber);
    for (const BlockDevice& disk : storage.Devices()) {
        if (!extents.empty() && disk.deviceNumber == extents.front().deviceNumber) {
            return UseRange(text, registry.NumberOf(disk), extents.front().startByte,
                            extents.front().byteCount);
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
    return UseRange(text, registry.NumberOf(std::filesystem::path(text)), 0, sizeBytes);
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

ResolvedTarget ResolvePath(const std::string& text)
{
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
                             byNode.empty() ? identity.ownDeviceNumber : byNode);
    }
    if (!identity.isRegularFile) {
        return Refuse(text, TargetFault::NotScannable);
    }
    FileHandle file;
    if (const ResultCode result = file.OpenForReading(path)) {
        return WhyNotOpened(text, result);
    }
    ScanTarget target;
    target.imagePath = path;
    target.letter = ScanTarget::FirstImageId;
    return target;
}

// "disk.img#3": a part of a disk or an image. What is there under the whole name is meant by it.
ResolvedTarget ResolvePart(const std::string& text)
{
    const std::size_t mark = text.rfind('#');
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    std::error_code ignored;
    if (mark == std::string::npos || mark == 0 ||
        std::filesystem::exists(std::filesystem::symlink_status(text, ignored))) {
        return ResolvePath(text);
    }
    const auto [stop, error] = std::from_chars(text.data() + mark + 1, end, number);
    if (error != std::errc() || stop != end) {
        return ResolvePath(text);
    }
    ResolvedTarget whole = ResolvePath(text.substr(0, mark));
    if (std::holds_alternative<TargetRefusal>(whole)) {
        return whole;
    }
    if (const std::optional<ScanTarget> part = FindPart(std::get<ScanTarget>(whole), number)) {
        return *part;
    }
    TargetRefusal refusal = Refuse(text.substr(0, mark), TargetFault::NoSuchPart);
    refusal.number = number;
    return refusal;
}

}  // namespace

TargetRefusal WhyNotOpened(const std::string& name, ResultCode why)
{
    TargetRefusal refusal = Refuse(name, why == ResultSuccess ? TargetFault::UnknownFileSystem
                                                              : TargetFault::CannotBeOpened);
    refusal.why = why;
    return refusal;
}

ResolvedTarget ResolveTarget(const std::string& text, TargetLister& lister)
{
    ResolvedTarget resolved;
    const ResultCode fault = RunGuarded([&] {
        resolved = text.starts_with('#') ? ResolveNumber(text, lister) : ResolvePart(text);
    });
    if (fault == ResultOutOfMemory) {
        return Refuse(text, TargetFault::OutOfMemory);
    }
    return fault == ResultSuccess ? resolved : ResolvedTarget(WhyNotOpened(text, fault));
}
