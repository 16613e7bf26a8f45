// Where record stores live: numbered folders under one root in the per-user application-data folder, and the file
// "config" that says which scan of which target stands in which of them, and how far it got.
#pragma once

#include "platform/ResultCode.h"
#include "recovery/ScanLogEntry.h"

#include <cstdint>
#include <filesystem>
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

// What a scan is of: a range of a drive, or an image when imagePath is not empty.
struct ScanIdentity
{
    std::uint32_t diskNumber = 0;
    std::uint64_t startLba = 0;
    std::uint64_t sectorCount = 0;
    std::filesystem::path imagePath;
};

// One object for the process, made on first use, when it reads the file; not locked. Its calls come one at a time.
class ScanLogDirectory
{
public:
    static ScanLogDirectory& Instance();

    // Works the root out anew and reads "config"; for a changed application-data folder. A file of any content is
    // taken: what is no entry of ours only never matches.
    void Reload();

    // <application data>/OrvantaLumivault/ScanLog
    const std::filesystem::path& Root() const { return m_root; }
    // The folder that stores are opened in: that of the resumed scan, else <root>/<logCounter>.
    std::filesystem::path CurrentLogPath() const;

    // The earlier scan of a target, if one stands in the log: true, and stores go to its folder from now on. A target
    // that has changed since loses its log.
    bool FindScan(const ScanIdentity& target, ScanLogEntry& outEntry);
    // Gives out the next number; a folder of that number left over from an earlier run is removed.
    void BeginNewLog();
    // Takes the number back when a new scan fails before its pass.
    void UndoLogNumber();
    // The first name in a log folder that holds the prefix; empty when there is none.
    [[nodiscard]] ResultCode FindLogFile(const std::filesystem::path& folder,
                                         std::string_view prefix,
                                         std::string& outName) const;
    // Enters or updates the scan of a target and writes the file. logFolder is where its stores are.
    [[nodiscard]] ResultCode SaveProgress(const ScanIdentity& target,
                                          const ScanPosition& position,
                                          const std::filesystem::path& logFolder);
    // Takes the first entry of that folder out of the list, and removes the folder with all it holds if it is one of
    // ours: a numbered one directly under the root. The file is not written.
    ResultCode DeleteLog(const std::filesystem::path& logFolder);
    // Writes the file as the list stands.
    [[nodiscard]] ResultCode Save() const;

    const std::vector<ScanLogEntry>& Entries() const { return m_entries; }
    // Whether a folder is a numbered one directly under the root; nothing else is ever written or removed.
    bool IsLogFolder(const std::filesystem::path& folder) const;

private:
    ScanLogDirectory();
    std::filesystem::path FolderOf(std::uint64_t number) const;
    ScanLogEntry* FindEntry(const ScanIdentity& target);
    void Load();

    std::filesystem::path m_root;
    std::uint64_t m_logCounter = 0;  // the highest number given out
    bool m_resumed = false;
    std::filesystem::path m_resumedFolder;
    std::vector<ScanLogEntry> m_entries;  // in file order
};
