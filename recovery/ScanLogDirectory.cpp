#include "recovery/ScanLogDirectory.h"

#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "platform/Text.h"
#include "recovery/CheckpointFile.h"
#include "storage/DiskHelpers.h"
#include "storage/VolumeStamp.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t CounterBytes = 8;
// A file of this size holds more scans than anyone makes; a longer one is damaged, and is read this far.
constexpr std::size_t LargestConfig = CounterBytes + 16384 * sizeof(ScanLogEntry);

// A folder's path without its ending separator.
std::filesystem::path WithoutSeparator(const std::filesystem::path& folder)
{
    return folder.has_filename() ? folder : folder.parent_path();
}

bool SameFolder(const std::filesystem::path& left, const std::filesystem::path& right)
{
    return EqualIgnoringAsciiCase(WithoutSeparator(left).string(),
                                  WithoutSeparator(right).string());
}

// What says that the target is as it was: the stamp of a volume, the time of an image. An image that is gone has 0.
std::uint64_t StampOf(const ScanSource& target)
{
    std::uint64_t stamp = 0;
    if (!target.IsImage()) {
        return VolumeStamp(target);
    }
    (void)ImageTime(target.Identity().imagePath, &stamp);
    return stamp;
}

// The same as of now, for a target that was opened a scan ago: what was written to a mounted volume since has to count.
std::uint64_t StampNow(const ScanIdentity& target)
{
    std::uint64_t stamp = 0;
    if (!target.imagePath.empty()) {
        (void)ImageTime(target.imagePath, &stamp);
        return stamp;
    }
    std::shared_ptr<ScanSource> drive;
    return ScanSource::OpenDriveRange(target.diskNumber, target.startLba, target.sectorCount,
                                      &drive) == ResultSuccess
               ? VolumeStamp(*drive)
               : 0;
}

std::uint64_t StampIn(const ScanLogEntry& entry, const ScanIdentity& target)
{
    return target.imagePath.empty() ? entry.volumeStamp : entry.imageTime;
}

// Numbers of drives are given anew in each run, so a log folder says in a file of its own which disk it is of.
constexpr const char* IdentityFile = ".disk";
constexpr std::size_t LargestIdentity = 4096;

std::string ReadIdentity(const std::filesystem::path& logFolder)
{
    FileHandle file;
    std::string text(LargestIdentity, '\0');
    std::size_t got = 0;
    if (file.OpenForReading(logFolder / IdentityFile) == ResultSuccess && file.IsRegularFile()) {
        (void)file.ReadAt(0, text.data(), text.size(), &got);  // what cannot be read is of no disk
    }
    text.resize(got);
    return text;
}

void WriteIdentity(const std::filesystem::path& logFolder, const ScanIdentity& target)
{
    if (!target.imagePath.empty()) {
        return;
    }
    const std::string text = CutText(DiskIdentity(target.diskNumber), LargestIdentity);
    // Without the file the scan is not resumed: the safe side.
    (void)WriteWholeFile(logFolder / IdentityFile, text.data(), text.size());
}

bool IsSameDisk(const ScanIdentity& target, const std::filesystem::path& logFolder)
{
    return !target.imagePath.empty() ||
           ReadIdentity(logFolder) == CutText(DiskIdentity(target.diskNumber), LargestIdentity);
}

void SetPosition(ScanLogEntry& entry, const ScanPosition& position)
{
    entry.rangeStart = position.rangeStart;
    entry.rangeLength = position.rangeLength;
    entry.position = position.position;
    entry.sectorsDone = position.sectorsDone;
    entry.filesFound = position.filesFound;
}

void SetStamp(ScanLogEntry& entry, const ScanIdentity& target, std::uint64_t stamp)
{
    (target.imagePath.empty() ? entry.volumeStamp : entry.imageTime) = stamp;
}

}  // namespace

std::filesystem::path ScanLogDirectory::DefaultRoot()
{
    return ApplicationDataFolder() / "OrvantaLumivault" / "ScanLog";
}

ScanLogDirectory::ScanLogDirectory(std::filesystem::path root) : m_root(std::move(root))
{
    Reload();
}

void ScanLogDirectory::Reload()
{
    const std::lock_guard guard(m_lock);
    m_logCounter = 0;
    m_entries.clear();
    m_killed.clear();
    // A save that stopped between its two steps is finished here.
    if (!PathExists(m_root / "config") && PathExists(m_root / "config.tmp")) {
        (void)RenameFile(m_root / "config.tmp", m_root / "config");
    }
    Load();
    LoadKilled();
}

// A folder with a checkpoint that no entry names belongs to a scan that was killed.
void ScanLogDirectory::LoadKilled()
{
    std::vector<std::string> names;
    (void)ListFolder(m_root, names);  // no folder, no scans
    for (const std::string& name : names) {
        const std::filesystem::path folder = m_root / name;
        const bool entered =
            std::any_of(m_entries.begin(), m_entries.end(), [&](const ScanLogEntry& entry) {
                return SameFolder(LogFolderOf(entry), folder);
            });
        Checkpoint checkpoint;
        if (!entered && IsLogFolder(folder) && ReadCheckpoint(folder, checkpoint) &&
            SameFolder(LogFolderOf(checkpoint.state.entry), folder)) {
            m_killed.push_back(checkpoint.state.entry);
        }
    }
}

void ScanLogDirectory::Load()
{
    FileHandle file;
    std::uint64_t size = 0;
    if (file.OpenForReading(m_root / "config") != ResultSuccess || !file.IsRegularFile() ||
        file.Size(&size) != ResultSuccess) {
        return;
    }
    std::vector<std::uint8_t> bytes(std::min<std::uint64_t>(size, LargestConfig));
    std::size_t got = 0;
    if (file.ReadAt(0, bytes.data(), bytes.size(), &got) != ResultSuccess || got < CounterBytes) {
        return;
    }
    std::memcpy(&m_logCounter, bytes.data(), CounterBytes);
    for (std::size_t at = CounterBytes; at < got; at += sizeof(ScanLogEntry)) {
        ScanLogEntry& entry = m_entries.emplace_back();
        std::memcpy(&entry, bytes.data() + at, std::min(sizeof entry, got - at));
    }
}

std::filesystem::path ScanLogDirectory::FolderOf(std::uint64_t number) const
{
    return m_root / std::to_string(number);
}

bool ScanLogDirectory::IsLogFolder(const std::filesystem::path& folder) const
{
    const std::filesystem::path plain = WithoutSeparator(folder);
    const std::string name = plain.filename().string();
    return plain.parent_path() == m_root && !name.empty() &&
           name.find_first_not_of("0123456789") == std::string::npos;
}

ScanLogEntry* ScanLogDirectory::FindEntry(std::vector<ScanLogEntry>& entries,
                                          const ScanIdentity& target) const
{
    const auto found = std::find_if(entries.begin(), entries.end(), [&](const ScanLogEntry& entry) {
        // One that names a folder that is none of ours is damaged, or made to mislead.
        return IsLogFolder(LogFolderOf(entry)) && IsOfSource(entry, target) &&
               entry.startLba == target.startLba && entry.sectorCount == target.sectorCount;
    });
    return found != entries.end() ? &*found : nullptr;
}

// A target that has changed loses its log here; what cannot be removed is not listed any more either.
bool ScanLogDirectory::FindUnchanged(std::vector<ScanLogEntry>& entries,
                                     const ScanIdentity& target,
                                     std::uint64_t stamp,
                                     ScanLogEntry& outEntry)
{
    const ScanLogEntry* entry = FindEntry(entries, target);
    if (entry == nullptr) {
        return false;
    }
    if (StampIn(*entry, target) != stamp || !IsSameDisk(target, LogFolderOf(*entry))) {
        (void)DeleteLogLocked(LogFolderOf(*entry));
        return false;
    }
    outEntry = *entry;
    return true;
}

// An image that has grown or was cut has other ranges: the earlier one with the same start would never be found again.
void ScanLogDirectory::DropOutdated(const ScanIdentity& target, std::uint64_t stamp)
{
    if (target.imagePath.empty()) {
        return;
    }
    std::vector<ScanLogEntry> all = m_entries;
    all.insert(all.end(), m_killed.begin(), m_killed.end());
    for (const ScanLogEntry& entry : all) {
        if (IsLogFolder(LogFolderOf(entry)) && IsOfSource(entry, target) &&
            entry.startLba == target.startLba && entry.imageTime != stamp) {
            (void)DeleteLogLocked(LogFolderOf(entry));  // what stays is not listed any more
        }
    }
}

bool ScanLogDirectory::FindScan(const ScanSource& target, ScanLogEntry& outEntry)
{
    const std::uint64_t stamp = StampOf(target);
    const std::lock_guard guard(m_lock);
    DropOutdated(target.Identity(), stamp);
    return FindUnchanged(m_killed, target.Identity(), stamp, outEntry) ||
           FindUnchanged(m_entries, target.Identity(), stamp, outEntry);
}

bool ScanLogDirectory::MakeEntry(const ScanSource& target,
                                 const std::filesystem::path& logFolder,
                                 ScanLogEntry& outEntry) const
{
    const ScanIdentity& identity = target.Identity();
    ScanLogEntry entry;
    if (!SetImagePath(entry, identity.imagePath) ||
        !SetLogFolder(entry, WithoutSeparator(logFolder) / "")) {
        return false;
    }
    entry.diskNumber = identity.diskNumber;
    entry.startLba = identity.startLba;
    entry.sectorCount = identity.sectorCount;
    SetStamp(entry, identity, StampOf(target));
    if (IsLogFolder(logFolder)) {
        WriteIdentity(logFolder, identity);
    }
    outEntry = entry;
    return true;
}

std::filesystem::path ScanLogDirectory::BeginNewLog()
{
    const std::lock_guard guard(m_lock);
    std::filesystem::path folder = FolderOf(++m_logCounter);
    while (PathExists(folder / CheckpointName)) {
        folder = FolderOf(++m_logCounter);
    }
    (void)DeleteLogLocked(folder);  // what cannot be removed is appended to
    return folder;
}

void ScanLogDirectory::UndoLogNumber(const std::filesystem::path& logFolder)
{
    const std::lock_guard guard(m_lock);
    if (SameFolder(logFolder, FolderOf(m_logCounter))) {
        --m_logCounter;
    }
}

std::vector<ScanLogEntry> ScanLogDirectory::Entries() const
{
    const std::lock_guard guard(m_lock);
    return m_entries;
}

std::vector<ScanLogEntry> ScanLogDirectory::KilledScans() const
{
    const std::lock_guard guard(m_lock);
    return m_killed;
}

ResultCode ScanLogDirectory::FindLogFile(const std::filesystem::path& folder,
                                         std::string_view prefix,
                                         std::string& outName)
{
    outName.clear();
    std::vector<std::string> names;
    if (const ResultCode result = ListFolder(folder, names)) {
        return result;
    }
    // Sorted, a store's main file comes before its indexes.
    for (std::string& name : names) {
        if (name.find(prefix) != std::string::npos) {
            outName = std::move(name);
            break;
        }
    }
    return ResultSuccess;
}

ResultCode ScanLogDirectory::SaveProgress(const ScanIdentity& target,
                                          const ScanPosition& position,
                                          const std::filesystem::path& logFolder)
{
    const std::uint64_t stamp = StampNow(target);
    const std::lock_guard guard(m_lock);
    std::erase_if(m_killed, [&](const ScanLogEntry& killed) {
        return SameFolder(LogFolderOf(killed), logFolder);
    });
    ScanLogEntry* entry = FindEntry(m_entries, target);
    // The scan's own record files can lie on the volume that was scanned and change it: the log in use is
    // kept, and what is on the disk now counts from here on.
    const bool inUse = entry != nullptr && SameFolder(LogFolderOf(*entry), logFolder);
    if (inUse) {
        SetPosition(*entry, position);
        SetStamp(*entry, target, stamp);
        return SaveLocked();
    }
    ScanLogEntry found;
    if (FindUnchanged(m_entries, target, stamp, found)) {
        SetPosition(*FindEntry(m_entries, target), position);
        return SaveLocked();
    }
    ScanLogEntry added;
    if (!SetImagePath(added, target.imagePath) ||
        !SetLogFolder(added, WithoutSeparator(logFolder) / "")) {
        return SaveLocked();  // its path does not fit: it cannot be resumed, but what it found is there all the same
    }
    added.diskNumber = target.imagePath.empty() ? target.diskNumber : ImageDiskNumber;
    added.startLba = target.startLba;
    added.sectorCount = target.sectorCount;
    SetPosition(added, position);
    SetStamp(added, target, stamp);
    m_entries.push_back(added);
    if (IsLogFolder(logFolder)) {
        WriteIdentity(logFolder, target);
    }
    return SaveLocked();
}

ResultCode ScanLogDirectory::Save() const
{
    const std::lock_guard guard(m_lock);
    return SaveLocked();
}

ResultCode ScanLogDirectory::SaveLocked() const
{
    const std::filesystem::path temporary = m_root / "config.tmp";
    (void)MakePrivateFolderWithParents(m_root);  // the opening below tells what went wrong
    FileHandle file;
    ResultCode result = file.OpenOrCreate(temporary);
    if (result != ResultSuccess) {
        return result;  // nothing of ours stands there that could take the place of the old one
    }
    result = file.Truncate(0);
    if (result == ResultSuccess) {
        result = file.WriteAt(0, &m_logCounter, CounterBytes);
    }
    if (result == ResultSuccess) {
        result =
            file.WriteAt(CounterBytes, m_entries.data(), m_entries.size() * sizeof(ScanLogEntry));
    }
    file.Close();
    // In any case, also after a failed write.
    const ResultCode renamed = RenameFile(temporary, m_root / "config");
    return result != ResultSuccess ? result : renamed;
}

ResultCode ScanLogDirectory::DeleteLog(const std::filesystem::path& logFolder)
{
    const std::lock_guard guard(m_lock);
    return DeleteLogLocked(logFolder);
}

ResultCode ScanLogDirectory::DeleteLogLocked(const std::filesystem::path& logFolder)
{
    const std::filesystem::path folder =
        WithoutSeparator(logFolder);  // the argument may stand in the list
    const auto isThere = [&](const ScanLogEntry& entry) {
        return SameFolder(LogFolderOf(entry), folder);
    };
    const auto found = std::find_if(m_entries.begin(), m_entries.end(), isThere);
    if (found != m_entries.end()) {
        m_entries.erase(found);
    }
    std::erase_if(m_killed, isThere);
    return IsLogFolder(folder) && PathExists(folder) ? RemoveTree(folder) : ResultSuccess;
}
