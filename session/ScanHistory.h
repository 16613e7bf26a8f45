// The log of earlier scans: who may use it, what stands in it, and how it is cleared. One for a face; any thread may call.
#pragma once

#include "session/ScanTarget.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct ScanLogEntry;
class ScanLogDirectory;
class HistoryLock;

enum class LockEnd
{
    Taken,
    CannotMakeFolder,
    CannotWriteFolder,
    FolderIsLink,  // it would lead the records, and their removal, somewhere else
    HeldElsewhere  // by another process
};

// Keeps other processes away from the scan records as long as a copy of it lives: two scans at once would take the same
// log folder from each other. Within a process it is shared.
struct LockOutcome
{
    LockEnd end = LockEnd::Taken;
    ResultCode why = ResultSuccess;
    std::filesystem::path folder;  // that the scan records lie in
    std::shared_ptr<const HistoryLock> lock;
};

enum class EarlierState
{
    Complete,
    Stopped,  // at percent
    Killed    // the same, and nobody asked for it
};

struct EarlierScan
{
    std::string number;               // of its folder; empty when it names none of ours
    std::filesystem::path imagePath;  // empty for a range of a drive
    std::uint32_t diskNumber = 0;
    std::uint64_t startSector = 0;
    std::uint64_t sectorCount = 0;
    EarlierState state = EarlierState::Complete;
    std::uint64_t percent = 100;
    bool gone = false;          // its folder is
    std::uint64_t savedAt = 0;  // FILETIME; 0 when it is not known
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;          // that its records take
    std::uint64_t unreadSectors = 0;  // that it could not read
    std::uint64_t unreadPlaces = 0;
};

struct EarlierScans
{
    ResultCode fault = ResultSuccess;
    std::vector<EarlierScan> scans;
};

enum class ForgetEnd
{
    Done,
    NotLocked,  // see lock
    NoSuchScan,
    InUse,     // by a target that is open in this process; the others are forgotten
    SomeLeft,  // could not be removed: see why
    Failed
};

struct ForgetOutcome
{
    ForgetEnd end = ForgetEnd::Done;
    std::uint64_t forgotten = 0;
    std::uint64_t unlisted = 0;  // folders of scans that the log did not list, removed with all
    ResultCode why = ResultSuccess;
    std::filesystem::path folder;  // that the scans' own folders lie in
    LockOutcome lock;
};

class ScanHistory
{
public:
    ScanHistory();
    // Scan records lie in that folder from now on. No target is open then.
    void KeepRecordsIn(const std::filesystem::path& dataFolder);
    // Makes the folder, takes the lock, and reads the log anew unless this process has the lock already.
    LockOutcome Lock();
    EarlierScans List() const;
    ForgetOutcome Forget(const std::string& number);
    ForgetOutcome ForgetAll();
    // Where scan records lie, whether it is there or not.
    std::filesystem::path RecordsFolder() const;
    // What a preview of a sound or clip leaves for the player, if one was made.
    std::filesystem::path ClipFile() const;
    // Writing scan records would write onto the target.
    bool LiesOn(const ScanTarget& target) const;

    // For this room alone: the log itself, which engines are given.
    std::shared_ptr<ScanLogDirectory> Log() const;
    EarlierScan Describe(const ScanLogEntry& entry) const;
    // An open target uses a folder, which is not forgotten as long; an empty one when it needs none any more.
    void SetInUse(const void* user, const std::filesystem::path& folder);

private:
    std::filesystem::path RecordsFolderLocked() const;
    void RemoveUnlisted(ForgetOutcome& outcome, bool& inUse) const;
    LockOutcome LockUnguarded();
    ForgetOutcome ForgetWhere(const std::string* number);
    void ForgetUnguarded(const std::string* number, ForgetOutcome& outcome);
    bool IsInUse(const std::filesystem::path& folder) const;

    mutable std::mutex m_mutex;
    std::shared_ptr<ScanLogDirectory> m_log;
    std::weak_ptr<const HistoryLock> m_lock;
    std::map<const void*, std::filesystem::path> m_inUse;  // by user
};
