#include "storage/DriveRegistry.h"

#include "platform/SystemFiles.h"

namespace {

bool IsSameDisk(const BlockDevice& left, const BlockDevice& right)
{
    if (left.diskSequence != 0 || right.diskSequence != 0) {
        return left.diskSequence == right.diskSequence;
    }
    return left.name == right.name && left.sizeBytes == right.sizeBytes;
}

}  // namespace

DriveRegistry& DriveRegistry::Instance()
{
    static DriveRegistry registry;
    return registry;
}

std::uint32_t DriveRegistry::FreeNumber() const
{
    std::uint32_t number = 0;
    while (m_entries.contains(number)) {
        ++number;
    }
    return number < NumberLimit ? number : NoNumber;
}

std::uint32_t DriveRegistry::NumberOf(const BlockDevice& disk)
{
    for (auto& [number, entry] : m_entries) {
        if (!entry.disk.name.empty() && IsSameDisk(entry.disk, disk)) {
            entry.disk = disk;
            entry.node = disk.Node();
            return number;
        }
    }
    const std::uint32_t number = FreeNumber();
    if (number != NoNumber) {
        m_entries.try_emplace(number, Entry{disk, disk.Node(), FileHandle()});
    }
    return number;
}

void DriveRegistry::NumberAll(const std::vector<BlockDevice>& disks)
{
    for (const BlockDevice& disk : disks) {
        (void)NumberOf(disk);
    }
}

std::uint32_t DriveRegistry::NumberOf(const std::filesystem::path& node)
{
    for (const auto& [number, entry] : m_entries) {
        if (entry.node == node) {
            return number;
        }
    }
    const std::uint32_t number = FreeNumber();
    if (number != NoNumber) {
        m_entries.try_emplace(number, Entry{BlockDevice(), node, FileHandle()});
    }
    return number;
}

const BlockDevice* DriveRegistry::Find(std::uint32_t diskNumber) const
{
    const auto found = m_entries.find(diskNumber);
    return found != m_entries.end() ? &found->second.disk : nullptr;
}

std::filesystem::path DriveRegistry::DeviceOf(std::uint32_t diskNumber) const
{
    const auto found = m_entries.find(diskNumber);
    return found != m_entries.end() ? found->second.node : std::filesystem::path();
}

void DriveRegistry::Forget(std::uint32_t diskNumber)
{
    m_entries.erase(diskNumber);
}

// A node keeps its name when the card in the reader is changed.
ResultCode DriveRegistry::CheckMedium(const Entry& entry)
{
    if (entry.disk.diskSequence == 0) {
        return ResultSuccess;
    }
    const std::optional<std::uint64_t> now =
        NumberIn(SystemPath("/sys/block/" + entry.disk.name) / "diskseq");
    return now && *now != entry.disk.diskSequence ? ResultNotConnected : ResultSuccess;
}

ResultCode DriveRegistry::Open(std::uint32_t diskNumber, FileHandle& outHandle)
{
    const auto found = m_entries.find(diskNumber);
    if (found == m_entries.end()) {
        return ResultFileNotFound;
    }
    Entry& entry = found->second;
    if (const ResultCode result = CheckMedium(entry)) {
        return result;
    }
    if (entry.privileged.IsOpen()) {
        return entry.privileged.Duplicate(outHandle);
    }
    const ResultCode result = outHandle.OpenForReading(entry.node);
    if (result != ResultAccessDenied || !m_privilegedOpener) {
        return result;
    }
    if (const ResultCode denied = m_privilegedOpener(entry.node, entry.privileged)) {
        return denied;
    }
    return entry.privileged.Duplicate(outHandle);
}
