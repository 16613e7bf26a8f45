#include "cli/ScanLog.h"

#include "cli/TextForms.h"
#include "platform/Folders.h"
#include "recovery/ScanLogDirectory.h"

#include <algorithm>
#include <vector>

std::optional<Refusal> ScanLogLock::Take()
{
    const std::filesystem::path folder = ScanLogDirectory::Instance().Root().parent_path();
    const std::string name = Printable(folder.string());
    const ResultCode made = MakePrivateFolderWithParents(folder);
    if (!FolderIsThere(made)) {
        return Refusal{ExitStatus::WrongUse, "the folder for scan records, " + name +
                                                 ", cannot be made: " + ErrorText(made) +
                                                 " Give another one with --data-dir."};
    }
    if (const ResultCode opened = m_file.OpenOrCreate(folder / "in-use.lock")) {
        return Refusal{ExitStatus::WrongUse, "the folder for scan records, " + name +
                                                 ", cannot be written: " + ErrorText(opened) +
                                                 " Give another one with --data-dir."};
    }
    if (!m_file.TryLock()) {
        return Refusal{ExitStatus::WrongUse,
                       "another scan uses " + name +
                           "; wait for its end, or give this one a folder of its "
                           "own with --data-dir."};
    }
    ScanLogDirectory::Instance().Reload();
    return std::nullopt;
}

std::string NumberOf(const ScanLogEntry& entry)
{
    const std::filesystem::path folder = LogFolderOf(entry);
    return ScanLogDirectory::Instance().IsLogFolder(folder)
               ? folder.parent_path().filename().string()
               : std::string();
}

std::string TargetOf(const ScanLogEntry& entry)
{
    const std::filesystem::path image = ImagePathOf(entry);
    if (!image.empty()) {
        return image.string();
    }
    const std::uint64_t end = entry.startLba + entry.sectorCount;
    return "drive " + std::to_string(entry.diskNumber) + ", sectors " +
           std::to_string(entry.startLba) + " to " + std::to_string(end);
}

std::string DateOf(const ScanLogEntry& entry)
{
    FileHandle folder;
    std::uint64_t time = 0;
    return folder.OpenForReading(LogFolderOf(entry)) == ResultSuccess &&
                   folder.WriteTime(&time) == ResultSuccess
               ? TimeText(time)
               : std::string();
}

std::string StateOf(const ScanLogEntry& entry)
{
    if (!IsFolder(LogFolderOf(entry))) {
        return "gone";
    }
    if (entry.rangeLength == 0) {
        return "complete";
    }
    const std::uint64_t total = std::max(std::uint64_t{entry.sectorCount}, std::uint64_t{1});
    const std::uint64_t done = std::min(std::uint64_t{entry.sectorsDone}, total);
    return "stopped at " + std::to_string(done / (total / 100 + 1)) + " %";
}

std::string DescribeScan(const ScanLogEntry& entry)
{
    return StateOf(entry) + ", " + DateOf(entry) + ", " + CountText(entry.filesFound, "file");
}

std::uint64_t BytesOf(const ScanLogEntry& entry)
{
    std::vector<std::string> names;
    const std::filesystem::path folder = LogFolderOf(entry);
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
