// Where record stores live: numbered folders under one root in the per-user application-data folder, and the file
// "config" that says which scan of which target stands in which of them, and how far it got.
#pragma once

#include "platform/ResultCode.h"
#include "recovery/ScanLogEntry.h"
#include "storage/ScanSource.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

// How far a scan got, as it is saved.
struct ScanPosition
{
    std::uint64_t rangeStart = 0;
    std::uint64_t rangeLength = 0;
    std::uint64_t position = 0;
    std::uint64_t sectorsDone = 0;
    std::uint64_t filesFound = 0;
};

// Owned by whoever runs scans, and handed down to the engines; one object for a root. Any thread may call it: scans of
// several targets share it, and each keeps the folder that it was given.
class ScanLogDirectory
{
public:
    // <application data>/OrvantaLumivault/ScanLog
    static std::filesystem::path DefaultRoot();

    // Reads "config". A file of any content is taken: what is no entry of ours only never matches.
    explicit ScanLogDirectory(std::filesystem::path root = DefaultRoot());
    // Reads it anew: another process may have written it.
    void Reload();

    // Never changes.
    const std::filesystem::path& Root() const { return m_root; }

    // The earlier scan of a target, if one stands in the log: one of the same range of the same drive or image, one that was
    // killed rather than one that was saved. A target
    // that has changed since loses its log.
    bool FindScan(const ScanSource& target, ScanLogEntry& outEntry);
    // An entry for a scan whose stores lie in a log folder, not entered yet. False when its paths do not fit.
    bool MakeEntry(const ScanSource& target,
                   const std::filesystem::path& logFolder,
                   ScanLogEntry& outEntry) const;
    // Gives out the next number, and its folder; one of that name left over from an earlier run is removed, unless there is
    // a checkpoint in it: then its number is passed over.
    std::filesystem::path BeginNewLog();
    // Takes the number of a folder back when a new scan fails before its pass; only the last one given out.
    void UndoLogNumber(const std::filesystem::path& logFolder);
    // The first name in a log folder that holds the prefix; empty when there is none.
    [[nodiscard]] static ResultCode
    FindLogFile(const std::filesystem::path& folder, std::string_view prefix, std::string& outName);
    // Enters or updates the scan of a target and writes the file. logFolder is where its stores are.
    [[nodiscard]] ResultCode SaveProgress(const ScanIdentity& target,
                                          const ScanPosition& position,
                                          const std::filesystem::path& logFolder);
    // Takes the first entry of that folder out of the list, and removes the folder with all it holds if it is one of
    // ours: a numbered one directly under the root. The file is not written.
    ResultCode DeleteLog(const std::filesystem::path& logFolder);
    // Writes the file as the list stands.
    [[nodiscard]] ResultCode Save() const;

    std::vector<ScanLogEntry> Entries() const;
    // Scans that were killed, as their checkpoints tell.
    std::vector<ScanLogEntry> KilledScans() const;
    // Whether a folder is a numbered one directly under the root; nothing else is ever written or removed.
    bool IsLogFolder(const std::filesystem::path& folder) const;

private:
    std::filesystem::path FolderOf(std::uint64_t number) const;
    // The lock is held.
    void Load();
    void LoadKilled();
    ScanLogEntry* FindEntry(std::vector<ScanLogEntry>& entries, const ScanIdentity& target) const;
    bool FindUnchanged(std::vector<ScanLogEntry>& entries,
                       const ScanIdentity& target,
                       std::uint64_t stamp,
                       ScanLogEntry& outEntry);
    void DropOutdated(const ScanIdentity& target, std::uint64_t stamp);
    ResultCode DeleteLogLocked(const std::filesystem::path& logFolder);
    [[nodiscard]] ResultCode SaveLocked() const;

    const std::filesystem::path m_root;
    mutable std::mutex m_lock;
    std::uint64_t m_logCounter = 0;       // the highest number given out
    std::vector<ScanLogEntry> m_entries;  // in file order
    std::vector<ScanLogEntry> m_killed;   // with a checkpoint and no entry
};
