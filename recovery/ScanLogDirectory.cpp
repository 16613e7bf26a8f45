#include "recovery/ScanLogDirectory.h"

#include "platform/Folders.h"

#include <string>

ScanLogDirectory& ScanLogDirectory::Instance()
{
    static ScanLogDirectory directory;
    return directory;
}

ScanLogDirectory::ScanLogDirectory()
{
    Reload();
}

void ScanLogDirectory::Reload()
{
    root = ApplicationDataFolder() / "OrvantaLumivault" / "ScanLog";
    logCounter = 0;
    resumed = false;
    resumedFolder.clear();
}

std::filesystem::path ScanLogDirectory::FolderOf(std::uint64_t number) const
{
    return root / std::to_string(number);
}

std::filesystem::path ScanLogDirectory::CurrentLogPath() const
{
    return resumed ? resumedFolder : FolderOf(logCounter);
}

void ScanLogDirectory::BeginNewLog()
{
    ++logCounter;
    resumed = false;
    (void)RemoveTree(FolderOf(logCounter));  // what cannot be removed is appended to
}

void ScanLogDirectory::UndoLogNumber()
{
    --logCounter;
}
