// The file "config" of the scan log, and everything that acts on what it says.
#include "recovery/ScanLogDirectory.h"
#include "storage/DriveRegistry.h"
#include "tests/support/TempFolder.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const DataFolder dataFolder;
    static const TempFolder outside;
    static const std::uint32_t disk = DriveRegistry::Instance().NumberOf(outside / "disk");
    const std::filesystem::path root = ScanLogDirectory::DefaultRoot();
    std::filesystem::create_directories(root / "1");
    std::filesystem::create_directories(outside / "2");
    WriteFileBytes(outside / "disk", ByteVector(1024));
    WriteFileBytes(root / "config", {data, size});
    ScanLogDirectory log;
    std::shared_ptr<ScanSource> drive;
    std::shared_ptr<ScanSource> image;
    if (ScanSource::OpenDriveRange(disk, 0, 2, &drive) != ResultSuccess ||
        ScanSource::OpenImage(outside / "disk", &image) != ResultSuccess) {
        std::abort();
    }
    ScanLogEntry found;
    for (const auto& target : {drive, image}) {
        (void)log.FindScan(*target, found);
        const std::filesystem::path folder = log.BeginNewLog();
        std::filesystem::create_directories(folder);  // as the stores in it do
        (void)log.SaveProgress(target->Identity(), {1, 2, 3, 4, 5}, folder);
        if (!log.FindScan(*target, found)) {
            std::abort();  // what was saved is found again, whatever stood there before
        }
    }
    for (const ScanLogEntry& entry : log.Entries()) {
        (void)log.DeleteLog(LogFolderOf(entry));
    }
    if (!std::filesystem::exists(outside / "2")) {
        std::abort();  // it is none of ours
    }
    (void)log.Save();
    return 0;
}
