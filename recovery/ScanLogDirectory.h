// Where record stores live: numbered folders under one root in the per-user application-data folder.
#pragma once

#include <cstdint>
#include <filesystem>

// One object for the process, made on first use; not locked. Its calls come one at a time.
class ScanLogDirectory
{
public:
    static ScanLogDirectory& Instance();

    // Works the root out anew and forgets what was given out; for a changed application-data folder.
    void Reload();

    // <application data>/OrvantaLumivault/ScanLog
    const std::filesystem::path& Root() const { return root; }
    // The folder that stores are opened in: that of the resumed scan, else <root>/<logCounter>.
    std::filesystem::path CurrentLogPath() const;
    // Gives out the next number; a folder of that number left over from an earlier run is removed.
    void BeginNewLog();
    // Takes the number back when a new scan fails before its pass.
    void UndoLogNumber();

private:
    ScanLogDirectory();
    std::filesystem::path FolderOf(std::uint64_t number) const;

    std::filesystem::path root;
    std::uint64_t logCounter = 0;  // the highest number given out
    bool resumed = false;
    std::filesystem::path resumedFolder;
};
