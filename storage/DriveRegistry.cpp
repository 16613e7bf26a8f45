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

std::uint32_t DriveRegistry::NumberLocked(const BlockDevice& disk)
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
        m_entries.try_emplace(number, Entry{disk, disk.Node()});
    }
    return number;
}

std::uint32_t DriveRegistry::NumberOf(const BlockDevice& disk)
{
    const std::lock_guard guard(m_lock);
    return NumberLocked(disk);
}

void DriveRegistry::NumberAll(const std::vector<BlockDevice>& disks)
{
    const std::lock_guard guard(m_lock);
    for (const BlockDevice& disk : disks) {
        (void)NumberLocked(disk);
    }
}

std::uint32_t DriveRegistry::NumberOf(const std::filesystem::path& node)
{
    const std::lock_guard guard(m_lock);
    for (const auto& [number, entry] : m_entries) {
        if (entry.node == node) {
            return number;
        }
    }
    const std::uint32_t number = FreeNumber();
    if (number != NoNumber) {
        m_entries.try_emplace(number, Entry{BlockDevice(), node});
    }
    return number;
}

std::optional<BlockDevice> DriveRegistry::Find(std::uint32_t diskNumber) const
{
    const std::lock_guard guard(m_lock);
    const auto found = m_entries.find(diskNumber);
    return found != m_entries.end() ? std::optional(found->second.disk) : std::nullopt;
}

std::filesystem::path DriveRegistry::DeviceOf(std::uint32_t diskNumber) const
{
    const std::lock_guard guard(m_lock);
    const auto found = m_entries.find(diskNumber);
    return found != m_entries.end() ? found->second.node : std::filesystem::path();
}

void DriveRegistry::Forget(std::uint32_t diskNumber)
{
    const std::lock_guard guard(m_lock);
    m_entries.erase(diskNumber);
}

void DriveRegistry::SetPrivilegedOpener(PrivilegedOpener opener)
{
    const std::lock_guard guard(m_lock);
    m_privilegedOpener = std::move(opener);
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

ResultCode
DriveRegistry::OpenEntry(const Entry& entry, const PrivilegedOpener& opener, FileHandle& outHandle)
{
    if (const ResultCode result = CheckMedium(entry)) {
        return result;
    }
    const std::lock_guard asking(entry.consent->lock);
    FileHandle& privileged = entry.consent->handle;
    if (!privileged.IsOpen()) {
        const ResultCode result = outHandle.OpenForReading(entry.node);
        if (result != ResultAccessDenied || !opener) {
            return result;
        }
        if (const ResultCode denied = opener(entry.node, privileged)) {
            return denied;
        }
        // The question may have stood for long enough to change the card.
        if (const ResultCode changed = CheckMedium(entry)) {
            privileged.Close();
            return changed;
        }
    }
    return privileged.Duplicate(outHandle);
}

ResultCode DriveRegistry::Open(std::uint32_t diskNumber, FileHandle& outHandle)
{
    Entry entry;
    PrivilegedOpener opener;
    {
        const std::lock_guard guard(m_lock);
        const auto found = m_entries.find(diskNumber);
        if (found == m_entries.end()) {
            return ResultFileNotFound;
        }
        entry = found->second;
        opener = m_privilegedOpener;
    }
    return OpenEntry(entry, opener, outHandle);
}
