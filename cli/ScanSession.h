// One target from its opening to what was found on it: what scan, list and recover have in common.
#pragma once

#include "cli/Cancel.h"
#include "cli/Command.h"
#include "cli/ProgressLine.h"
#include "cli/ScanLog.h"
#include "cli/TargetResolver.h"
#include "cli/TypeFilter.h"

#include <array>
#include <functional>
#include <memory>

// Owns the target with its engine. The options and streams outlive it. While it lives, Ctrl-C cancels its work.
class ScanSession
{
public:
    ScanSession(const CommandOptions& options, CommandStreams& streams);
    ScanSession(const ScanSession&) = delete;
    ScanSession& operator=(const ScanSession&) = delete;
    ~ScanSession();

    // Opens the target: what can be refused is refused before anything is written.
    [[nodiscard]] std::optional<Refusal> OpenTarget();
    // Scans it. A cancelled scan is no refusal: what was found until then stands.
    [[nodiscard]] std::optional<Refusal> Scan();
    // Both.
    [[nodiscard]] std::optional<Refusal> OpenAndScan();
    // What the filter accepts of all that was found, sorted.
    FileRecordList Search(const TypeFilter& filter) const;

    bool Cancelled() const { return m_cancelled || CancelScope::Requested(); }
    IFileRecoveryParse& Engine() const { return *m_target.Engine; }
    const ScanTarget& Target() const { return m_target; }
    ProgressLine& Line() { return m_line; }
    // The folders above a record, each followed by "\".
    std::string FolderPath(const FileRecord& record) const;
    // The name of the record file that a record stands in; empty when it is not known.
    const std::string& StoreName(const FileRecord& record) const;

    // Writes a sentence to standard error unless --quiet.
    void Note(const std::string& sentence);

private:
    std::optional<Refusal> UseScanLog();
    void ChooseEarlierScan();
    bool AskToResume(const std::string& scan);
    void FindStoreNames();
    static ResultCode OnScanProgress(void* context,
                                     std::int32_t progress,
                                     std::int32_t range,
                                     std::int32_t secondsLeft,
                                     std::uint64_t doneSectors,
                                     std::uint64_t totalSectors,
                                     std::uint64_t filesFound,
                                     std::uint32_t reserved);

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    CancelScope m_cancel;
    ProgressLine m_line;
    std::optional<ScanLogLock> m_lock;
    ScanTarget m_target;
    std::array<std::string, 5> m_storeNames;  // by engine kind
    bool m_cancelled = false;
};
