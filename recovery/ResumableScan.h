// What engines offer whose records stand in the log, and whose scans can be resumed.
#pragma once

#include "platform/ResultCode.h"
#include "storage/ScanMarks.h"
#include "storage/SectorRanges.h"

#include <cstdint>
#include <filesystem>
#include <memory>

struct ScanLogEntry;

// Records that could not be written. A fault without a number is one of an index: paths are poorer.
struct LostRecords
{
    std::uint64_t records = 0;
    ResultCode why = ResultSuccess;
};

// Used by the thread that uses the engine. An engine that keeps records knows in which folder.
class IKeepsRecords
{
public:
    IKeepsRecords() = default;
    IKeepsRecords(const IKeepsRecords&) = delete;
    IKeepsRecords& operator=(const IKeepsRecords&) = delete;

    // Where the stores of the scan are; empty before Scan.
    virtual const std::filesystem::path& LogFolder() const = 0;
    // What the stores could not keep; the scan is not complete then.
    virtual LostRecords Lost() const = 0;
    // Which sectors of the source could not be read.
    virtual SectorRanges Unread() const = 0;
    // Their number; cheap.
    virtual std::uint64_t UnreadSectors() const = 0;
    // Where it has read and found so far; null when nobody keeps that.
    virtual std::shared_ptr<const ScanMarks> Marks() const { return nullptr; }

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
    // Scan starts anew. What the earlier one left is removed when the new one stands in the log for the first time.
    virtual void DiscardResumableScan() = 0;
    // Scan only reads what the earlier scan could not, and adds what it finds; for one that came to its end.
    virtual void ReadUnreadAgain() = 0;
    // The scan that ended last stands in the log, so it can be resumed or taken as it is.
    virtual bool StandsInLog() const = 0;
    // Why the quick stage of the scan that ended last failed. A scan of all sectors goes on without it, any other ends there.
    virtual ResultCode QuickFault() const { return ResultSuccess; }

protected:
    ~IResumableScan() = default;
};
