// What an engine offers whose scans stand in the log and can be gone on with.
#pragma once

#include <filesystem>

struct ScanLogEntry;

// Used by the thread that uses the engine.
class IResumableScan
{
public:
    IResumableScan() = default;
    IResumableScan(const IResumableScan&) = delete;
    IResumableScan& operator=(const IResumableScan&) = delete;

    // An earlier scan of this target stands in the log, and Scan would go on with it.
    virtual bool HasResumableScan() const = 0;
    // That scan; meaningful while HasResumableScan.
    virtual const ScanLogEntry& ResumableScan() const = 0;
    // Scan starts anew, and what the earlier one left is removed.
    virtual void DiscardResumableScan() = 0;
    // Where the stores of the scan are; empty before Scan.
    virtual const std::filesystem::path& LogFolder() const = 0;

protected:
    ~IResumableScan() = default;
};
