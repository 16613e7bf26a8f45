#include "session/ScanHistory.h"

#include "platform/FileHandle.h"
#include "platform/Folders.h"
#include "recovery/RestoreSupport.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/UnreadFile.h"
#include "session/Guard.h"
#include "session/TargetPlace.h"

#include <algorithm>

class HistoryLock
{
public:
    FileHandle file;
};

namespace {

std::filesystem::path WithoutSeparator(const std::filesystem::path& folder)
{
    return folder.has_filename() ? folder : folder.parent_path();
}

std::string NumberOf(const ScanLogDirectory& log, const ScanLogEntry& entry)
{
    const std::filesystem::path folder = LogFolderOf(entry);
    return log.IsLogFolder(folder) ? WithoutSeparator(folder).filename().string() : std::string();
}

std::uint64_t SavedAt(const std::filesystem::path& folder)
{
    FileHandle handle;
    std::uint64_t time = 0;
    return handle.OpenForReading(folder) == ResultSuccess &&
                   handle.WriteTime(&time) == ResultSuccess
               ? time
               : 0;
}

std::uint64_t BytesIn(const std::filesystem::path& folder)
{
    std::vector<std::string> names;
    (void)ListFolder(folder, names);  // a folder that is gone takes nothing
    std::uint64_t sum = 0;
    for (const std::string& name : names) {
        FileHandle file;
        std::uint64_t size = 0;
        if (file.OpenForReading(folder / name) == ResultSuccess &&
            file.Size(&size) == ResultSuccess) {
            sum += size;
        }
    }
    return sum;
}

// Rounded down. Fields of an entry are not aligned, so what takes a reference gets a copy.
std::uint64_t PercentOf(const ScanLogEntry& entry)
{
    const std::uint64_t total = std::max(std::uint64_t{entry.sectorCount}, std::uint64_t{1});
    const std::uint64_t done = std::min(std::uint64_t{entry.sectorsDone}, total);
    return done / (total / 100 + 1);
}

std::vector<ScanLogEntry> AllScans(const ScanLogDirectory& log)
{
    std::vector<ScanLogEntry> entries = log.Entries();
    const std::vector<ScanLogEntry> killed = log.KilledScans();
    entries.insert(entries.end(), killed.begin(), killed.end());
    return entries;
}

EarlierScan DescribeEntry(const ScanLogDirectory& log, const ScanLogEntry& entry)
{
    const std::filesystem::path folder = LogFolderOf(entry);
    EarlierScan scan;
    scan.number = NumberOf(log, entry);
    scan.imagePath = ImagePathOf(entry);
    scan.diskNumber = entry.diskNumber;
    scan.startSector = entry.startLba;
    scan.sectorCount = entry.sectorCount;
    scan.savedAt = SavedAt(folder);
    scan.files = entry.filesFound;
    scan.bytes = BytesIn(folder);
    scan.gone = !IsFolder(folder);
    const SectorRanges unread = ReadUnread(folder);
    scan.unreadSectors = unread.Sectors();
    scan.unreadPlaces = unread.Places();
    const std::vector<ScanLogEntry> killed = log.KilledScans();
    const bool wasKilled = std::any_of(killed.begin(), killed.end(), [&](const ScanLogEntry& one) {
        return LogFolderOf(one) == folder;
    });
    if (wasKilled || entry.rangeLength != 0) {
        scan.state = wasKilled ? EarlierState::Killed : EarlierState::Stopped;
        scan.percent = PercentOf(entry);
    }
    return scan;
}

}  // namespace

ScanHistory::ScanHistory() : m_log(std::make_shared<ScanLogDirectory>()) {}

std::filesystem::path ScanHistory::RecordsFolder() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return RecordsFolderLocked();
}

std::filesystem::path ScanHistory::ClipFile() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_log->Root() / PreviewClipName;
}

std::filesystem::path ScanHistory::RecordsFolderLocked() const
{
    return m_log->Root().parent_path();
}

void ScanHistory::KeepRecordsIn(const std::filesystem::path& dataFolder)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    SetApplicationDataFolder(dataFolder);
    m_log = std::make_shared<ScanLogDirectory>();
}

LockOutcome ScanHistory::Lock()
{
    LockOutcome outcome;
    const ResultCode fault = RunGuarded([&] { outcome = LockUnguarded(); });
    if (fault != ResultSuccess) {
        outcome.end = LockEnd::CannotWriteFolder;
        outcome.why = fault;
    }
    return outcome;
}

LockOutcome ScanHistory::LockUnguarded()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    LockOutcome outcome;
    outcome.folder = RecordsFolderLocked();
    outcome.lock = m_lock.lock();
    if (outcome.lock != nullptr) {
        return outcome;
    }
    for (const std::filesystem::path& folder : {outcome.folder, m_log->Root()}) {
        std::error_code ignored;
        if (std::filesystem::is_symlink(std::filesystem::symlink_status(folder, ignored))) {
            outcome.end = LockEnd::FolderIsLink;
            outcome.folder = folder;
            return outcome;
        }
    }
    outcome.why = MakePrivateFolderWithParents(outcome.folder);
    if (!FolderIsThere(outcome.why)) {
        outcome.end = LockEnd::CannotMakeFolder;
        return outcome;
    }
    const auto lock = std::make_shared<HistoryLock>();
    outcome.why = lock->file.OpenOrCreate(outcome.folder / "in-use.lock");
    if (outcome.why != ResultSuccess) {
        outcome.end = LockEnd::CannotWriteFolder;
        return outcome;
    }
    if (!lock->file.TryLock()) {
        outcome.end = LockEnd::HeldElsewhere;
        return outcome;
    }
    m_log->Reload();
    m_lock = lock;
    outcome.lock = lock;
    return outcome;
}

EarlierScans ScanHistory::List() const
{
    EarlierScans list;
    list.fault = RunGuarded([&] {
        const std::lock_guard<std::mutex> guard(m_mutex);
        for (const ScanLogEntry& entry : AllScans(*m_log)) {
            list.scans.push_back(DescribeEntry(*m_log, entry));
        }
    });
    return list;
}

ForgetOutcome ScanHistory::Forget(const std::string& number)
{
    return ForgetWhere(&number);
}

ForgetOutcome ScanHistory::ForgetAll()
{
    return ForgetWhere(nullptr);
}

ForgetOutcome ScanHistory::ForgetWhere(const std::string* number)
{
    ForgetOutcome outcome;
    outcome.lock = Lock();
    if (outcome.lock.end != LockEnd::Taken) {
        outcome.end = ForgetEnd::NotLocked;
        return outcome;
    }
    const ResultCode fault = RunGuarded([&] { ForgetUnguarded(number, outcome); });
    if (fault != ResultSuccess) {
        outcome.end = ForgetEnd::Failed;
        outcome.why = fault;
    }
    return outcome;
}

void ScanHistory::ForgetUnguarded(const std::string* number, ForgetOutcome& outcome)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    outcome.folder = m_log->Root();
    const std::vector<ScanLogEntry> entries = AllScans(*m_log);  // the list changes meanwhile
    bool inUse = false;
    for (const ScanLogEntry& entry : entries) {
        if (number != nullptr && NumberOf(*m_log, entry) != *number) {
            continue;
        }
        const std::filesystem::path folder = LogFolderOf(entry);
        if (IsInUse(folder)) {
            inUse = true;
            continue;
        }
        if (const ResultCode result = m_log->DeleteLog(folder)) {
            outcome.why = result;
        }
        ++outcome.forgotten;
    }
    if (number == nullptr) {
        RemoveUnlisted(outcome, inUse);
    }
    if (const ResultCode result = outcome.forgotten != 0 ? m_log->Save() : ResultSuccess) {
        outcome.why = result;
    }
    if (outcome.why != ResultSuccess) {
        outcome.end = ForgetEnd::SomeLeft;
    } else if (inUse) {
        outcome.end = ForgetEnd::InUse;
    } else if (outcome.forgotten == 0 && number != nullptr) {
        outcome.end = ForgetEnd::NoSuchScan;
    }
}

// Quick scans are not listed, nor those whose entry was lost. Their folders are of use to nobody.
void ScanHistory::RemoveUnlisted(ForgetOutcome& outcome, bool& inUse) const
{
    std::vector<std::string> names;
    (void)ListFolder(outcome.folder, names);  // one that is not there holds none
    for (const std::string& name : names) {
        const std::filesystem::path folder = outcome.folder / name;
        if (!m_log->IsLogFolder(folder) || !IsRealFolder(folder)) {
            continue;
        }
        if (IsInUse(folder)) {
            inUse = true;
        } else if (const ResultCode result = m_log->DeleteLog(folder)) {
            outcome.why = result;
        } else {
            ++outcome.unlisted;
        }
    }
}

bool ScanHistory::LiesOn(const ScanTarget& target) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return PathTouchesTarget(RecordsFolderLocked(), target) == Touching::Yes;
}

std::shared_ptr<ScanLogDirectory> ScanHistory::Log() const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_log;
}

EarlierScan ScanHistory::Describe(const ScanLogEntry& entry) const
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return DescribeEntry(*m_log, entry);
}

bool ScanHistory::IsInUse(const std::filesystem::path& folder) const
{
    const std::filesystem::path plain = WithoutSeparator(folder);
    return std::any_of(m_inUse.begin(), m_inUse.end(),
                       [&plain](const auto& user) { return user.second == plain; });
}

void ScanHistory::SetInUse(const void* user, const std::filesystem::path& folder)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (folder.empty()) {
        m_inUse.erase(user);
    } else {
        m_inUse[user] = WithoutSeparator(folder);
    }
}
