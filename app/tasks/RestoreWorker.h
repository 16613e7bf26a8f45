// Restores found files and reports on each of them.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "app/tasks/TaskContext.h"
#include "session/RestoreFiles.h"

#include <cstdint>
#include <optional>

class RestoreWorker
{
public:
    RestoreWorker(TaskContext context, const RecoveryState& state);

    // Runs what it is given; false when a fault of the hardware has ended it.
    std::function<bool(const std::function<void()>& work)> faultGuard;

    // What is ticked. Nobody else touches it, or the folder, meanwhile.
    void RunMany();
    // One record, which may be null.
    void RunOne(const FoundRow* row);

private:
    // True when the user has stopped it.
    bool Restore(std::span<const FoundRow> rows, bool isGuarded);
    void End();
    Answer OnProgress(const RestoreProgress& progress);
    // The engine has told the end of a file; a folder's files all count as the one record that they belong to.
    void OnFileDone(const RestoreProgress& progress);
    void AskWhenFull(const FileOutcome& outcome);
    // What became of it in the end, which has the last word.
    void OnOutcome(bool hasSource, const FileOutcome& outcome);
    void Report(ReportRow row);
    void ShowCounts() const;
    void ShowSummary() const;
    std::string StatusOf(const FileOutcome& outcome) const;

    TaskContext m_context;
    const RecoveryState& m_state;
    std::int32_t m_processed = 0;
    std::int32_t m_failed = 0;
    std::int32_t m_total = 0;
    std::int32_t m_damaged = 0;
    std::int32_t m_fullInARow = 0;   // files that found no room, one after the other
    bool m_isFull = false;           // and the user wants no more of them to be tried
    std::optional<ReportRow> m_row;  // of the record that is being restored, once there is one
};
