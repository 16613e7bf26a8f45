// The log of earlier scans as the command line uses it: one process at a time, and a line for each scan.
#pragma once

#include "cli/Command.h"
#include "platform/FileHandle.h"
#include "recovery/ScanLogDirectory.h"

#include <memory>
#include <optional>
#include <string>

// Keeps other processes away from the data folder as long as it lives. Two scans at once would take the same log folder
// from each other.
class ScanLogLock
{
public:
    // Makes the folder, takes the lock, and reads the log anew. Refuses when another process holds it.
    [[nodiscard]] std::optional<Refusal> Take();

private:
    FileHandle m_file;
};

// The log in the application-data folder of now; read anew by the lock.
const std::shared_ptr<ScanLogDirectory>& CommandLog();

// "complete, 2024-05-17T08:30:12, 12 files" or "stopped at 40 %, ...".
std::string DescribeScan(const ScanLogEntry& entry);
// The number of the folder that a scan's stores are in; empty when the entry names none of ours.
std::string NumberOf(const ScanLogEntry& entry);
// The image's path, or the drive and range.
std::string TargetOf(const ScanLogEntry& entry);
// When the scan was saved, as TimeText; empty when its folder is gone.
std::string DateOf(const ScanLogEntry& entry);
// "complete", "stopped at 40 %", "gone".
std::string StateOf(const ScanLogEntry& entry);
// What the scan's stores take on disk.
std::uint64_t BytesOf(const ScanLogEntry& entry);
