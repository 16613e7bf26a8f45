#include "session/RestoreFiles.h"

#include "platform/Folders.h"
#include "recovery/RestoreSupport.h"
#include "session/Guard.h"

#include <algorithm>

namespace {

class Restoring
{
public:
    Restoring(std::span<const std::shared_ptr<ScanSession>> sources,
              std::size_t total,
              Destination& destination,
              const RestoreCalls& calls)
        : m_sources(sources.begin(), sources.end()), m_destination(destination), m_calls(calls)
    {
        m_progress.total = total;
    }

    void Take(const FoundRow& row);
    RestoreOutcome Outcome() const { return m_outcome; }

private:
    ScanSession* SourceOf(const FileRecord& record) const;
    FileOutcome TakeFile(ScanSession* source, const FoundRow& row);
    bool GoesOn();

    std::vector<std::shared_ptr<ScanSession>> m_sources;  // copies: they stay as long as this runs
    Destination& m_destination;
    const RestoreCalls& m_calls;
    RestoreProgress m_progress;
    RestoreOutcome m_outcome;
};

ScanSession* Restoring::SourceOf(const FileRecord& record) const
{
    const auto found =
        std::find_if(m_sources.begin(), m_sources.end(), [&record](const auto& source) {
            return source->Target().letter == record.DriveLetter;
        });
    return found != m_sources.end() ? found->get() : nullptr;
}

bool Restoring::GoesOn()
{
    if (!m_outcome.stopped && m_calls.onProgress &&
        m_calls.onProgress(m_progress) != Answer::GoOn) {
        m_outcome.stopped = true;
    }
    return !m_outcome.stopped;
}

void Restoring::Take(const FoundRow& row)
{
    ScanSession* const source = SourceOf(row.record);
    ++m_progress.number;
    m_progress.percent = 0;
    m_progress.error = ResultSuccess;
    m_progress.path.clear();
    FileOutcome outcome;
    if (GoesOn()) {
        outcome = TakeFile(source, row);
        (outcome.end == FileEnd::Restored ? m_outcome.restored : m_outcome.failed) += 1;
    }
    if (m_calls.onFile) {
        m_calls.onFile(source, row, outcome);
    }
}

FileOutcome Restoring::TakeFile(ScanSession* source, const FoundRow& row)
{
    FileOutcome outcome;
    outcome.why = RunGuarded([&] {
        if (source == nullptr) {
            return ResultNotConnected;
        }
        const std::string folders =
            m_destination.KeepsTree() ? source->FolderPath(row.record) : std::string();
        outcome.path = m_destination.PathFor(row.record, folders);
        return source->Restore(
            row.record, outcome.path, CountSeparators(m_destination.Folder()),
            [this](std::int32_t percent, ResultCode error, const std::filesystem::path& path) {
                m_progress.percent = percent;
                m_progress.error = error;
                m_progress.path = path;
                return GoesOn() ? Answer::GoOn : Answer::Stop;
            });
    });
    outcome.end = outcome.why == ResultSuccess     ? FileEnd::Restored
                  : outcome.why == ResultCancelled ? FileEnd::Cancelled
                                                   : FileEnd::Failed;
    outcome.written = !outcome.path.empty() && PathExists(outcome.path);
    return outcome;
}

}  // namespace

RestoreOutcome RestoreFiles(std::span<const std::shared_ptr<ScanSession>> sources,
                            std::span<const FoundRow> rows,
                            Destination& destination,
                            const RestoreCalls& calls)
{
    RestoreOutcome outcome;
    const ResultCode fault = RunGuarded([&] {
        Restoring restoring(sources, rows.size(), destination, calls);
        for (const FoundRow& row : rows) {
            restoring.Take(row);
            outcome = restoring.Outcome();
        }
    });
    outcome.fault = fault;
    return outcome;
}
