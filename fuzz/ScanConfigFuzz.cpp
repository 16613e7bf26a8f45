// The file "config" of the scan log, and everything that acts on what it says.
#include "recovery/ScanLogDirectory.h"
#include "tests/support/TempFolder.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const DataFolder dataFolder;
    static const TempFolder outside;
    ScanLogDirectory& log = ScanLogDirectory::Instance();
    std::filesystem::create_directories(log.Root() / "1");
    std::filesystem::create_directories(outside / "2");
    WriteFileBytes(log.Root() / "config", {data, size});
    log.Reload();
    const ScanIdentity drive = {0, 0, 1000, {}};
    const ScanIdentity image = {ImageDiskNumber, 0, 1000, outside.Path() / "x.img"};
    ScanLogEntry found;
    for (const ScanIdentity& target : {drive, image}) {
        (void)log.FindScan(target, found);
        log.BeginNewLog();
        (void)log.SaveProgress(target, {1, 2, 3, 4, 5}, log.CurrentLogPath());
        if (!log.FindScan(target, found)) {
            std::abort();  // what was saved is found again, whatever stood there before
        }
    }
    for (const ScanLogEntry& entry : std::vector<ScanLogEntry>(log.Entries())) {
        (void)log.DeleteLog(LogFolderOf(entry));
    }
    if (!std::filesystem::exists(outside / "2")) {
        std::abort();  // it is none of ours
    }
    (void)log.Save();
    return 0;
}
