// What engines offer whose records stand in the log, and whose scans can be gone on with.
#pragma once

#include <filesystem>

struct ScanLogEntry;

// Used by the thread that uses the engine. An engine that keeps records knows in which folder.
class IKeepsRecords
{
public:
    IKeepsRecords() = default;
    IKeepsRecords(const IKeepsRecords&) = delete;
    IKeepsRecords& operator=(const IKeepsRecords&) = delete;

    // Where the stores of the scan are; empty before Scan.
    virtual const std::filesystem::path& LogFolder() const = 0;

protected:
    ~IKeepsRecords() = default;
};

class IResumableScan : public IKeepsRecords
{
public:
    // An earlier scan of this target stands in the log, and Scan would go on with it.
    virtual bool HasResumableScan() const = 0;
    // That scan; meaningful while HasResumableScan.
    virtual const ScanLogEntry& ResumableScan() const = 0;
    // Scan starts anew, and what the earlier one left is removed.
    virtual void DiscardResumableScan() = 0;

protected:
    ~IResumableScan() = default;
};
