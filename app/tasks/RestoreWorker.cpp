#include "app/tasks/RestoreWorker.h"

#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"

#include <utility>

RestoreWorker::RestoreWorker(TaskContext context, const RecoveryState& state)
    : m_context(std::move(context)), m_state(state)
{
}

void RestoreWorker::RunMany()
{
    std::vector<FoundRow> rows;
    rows.reserve(m_state.selection.size());
    for (const auto& [key, row] : m_state.selection) {
        rows.push_back(row);
    }
    if (!Restore(rows, true)) {
        End();
    }
    m_context.gate.finished = true;
}

void RestoreWorker::RunOne(const FoundRow* row)
{
    if (row != nullptr && !Restore({row, 1}, false)) {
        End();
    }
    m_context.gate.finished = true;
}

void RestoreWorker::End()
{
    m_context.board.SetVisible("FinishBtn", true);
    m_context.board.SetVisible("CancelBtn", false);
}

bool RestoreWorker::Restore(std::span<const FoundRow> rows, bool isGuarded)
{
    m_processed = 0;
    m_failed = 0;
    m_total = static_cast<std::int32_t>(rows.size());
    std::vector<std::shared_ptr<ScanSession>> sources;
    for (const auto& target : m_state.targets) {
        if (target->engine != nullptr) {
            sources.push_back(target->engine);
        }
    }
    Destination destination(m_state.restoreFolder, Layout::ByCategory);
    (void)destination.Make();  // where it cannot be made, each file says why
    RestoreCalls calls;
    calls.onProgress = [this](const RestoreProgress& progress) { return OnProgress(progress); };
    calls.onFile = [this](const ScanSession* source, const FoundRow&, const FileOutcome& outcome) {
        const std::lock_guard held(m_context.gate.lock);
        OnOutcome(source != nullptr, outcome);
    };
    if (isGuarded) {
        calls.guard = faultGuard;
    }
    return RestoreFiles(sources, rows, destination, calls).stopped;
}

Answer RestoreWorker::OnProgress(const RestoreProgress& progress)
{
    return TellProgress(m_context.gate, [&] {
        if (progress.path.empty()) {
            m_row.reset();  // the next record begins
            return;
        }
        if (progress.percent == 100) {
            OnFileDone(progress);
        }
        m_context.board.SetText("current", progress.path.string());
        ShowPercent(m_context, "MSG1101", progress.percent);
        ShowCounts();
    });
}

void RestoreWorker::OnFileDone(const RestoreProgress& progress)
{
    const bool isGood = progress.error == ResultSuccess;
    if (!m_row) {
        m_failed += isGood ? 0 : 1;
        ++m_processed;
    }
    Report(progress.path.string(),
           isGood ? m_context.desktop.Get("DSK0204") : ErrorText(progress.error), isGood);
}

// The engine's own words stand, unless there were none or the file came to grief behind them.
void RestoreWorker::OnOutcome(bool hasSource, const FileOutcome& outcome)
{
    if (outcome.end == FileEnd::NotTried || outcome.end == FileEnd::Cancelled) {
        return;
    }
    const bool isGood = outcome.end == FileEnd::Restored;
    const bool isLost = outcome.end == FileEnd::Failed;
    if (!m_row) {
        ++m_processed;
        m_failed += isGood ? 0 : 1;
        if (hasSource && !outcome.faulted) {
            Report(outcome.path.string(), StatusOf(outcome), isGood);
        }
    } else if (isLost && m_row->isGood) {
        ++m_failed;
        Report(outcome.path.string(), StatusOf(outcome), false);
    } else if (!outcome.path.empty() && outcome.path.string() != m_row->path) {
        Report(outcome.path.string(), m_row->status, m_row->isGood);  // where it went in the end
    }
    ShowCounts();
}

std::string RestoreWorker::StatusOf(const FileOutcome& outcome) const
{
    if (outcome.end == FileEnd::Failed) {
        return ErrorText(outcome.why);
    }
    return m_context.desktop.Get(outcome.end == FileEnd::Restored ? "DSK0204" : "DSK0205");
}

void RestoreWorker::Report(const std::string& path, const std::string& status, bool isGood)
{
    if (m_row) {
        *m_row = {m_row->number, path, status, isGood};
        m_context.board.ChangeRow(m_row->number, path, status, isGood);
        return;
    }
    m_row = ReportRow{m_context.board.AddRow(path, status, isGood), path, status, isGood};
}

void RestoreWorker::ShowCounts() const
{
    m_context.board.SetText("recovered", FormatText(m_context.messages.Get("MSG1102"), m_processed,
                                                    m_total, m_processed - m_failed, m_failed));
}
