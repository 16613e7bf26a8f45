#include "app/tasks/RestoreWorker.h"

#include "app/tasks/CloseCode.h"
#include "platform/Text.h"
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
        rows.push_back(row.Row());
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
    ShowSummary();
    m_context.board.SetVisible("FinishBtn", true);
    m_context.board.SetVisible("CancelBtn", false);
}

bool RestoreWorker::Restore(std::span<const FoundRow> rows, bool isGuarded)
{
    m_processed = 0;
    m_failed = 0;
    m_total = static_cast<std::int32_t>(rows.size());
    m_damaged = 0;
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
        {
            const std::lock_guard held(m_context.gate.lock);
            OnOutcome(source != nullptr, outcome);
        }
        AskWhenFull(outcome);
    };
    if (isGuarded) {
        calls.guard = faultGuard;
    }
    return RestoreFiles(sources, rows, destination, calls).stopped && !m_isFull;
}

// Once a row of failures: whoever goes on knows that more of them follow.
void RestoreWorker::AskWhenFull(const FileOutcome& outcome)
{
    constexpr std::int32_t FailuresThatTell = 3;
    if (outcome.why != ResultDiskFull) {
        m_fullInARow = 0;
        return;
    }
    if (++m_fullInARow == FailuresThatTell && m_processed < m_total) {
        m_isFull =
            m_context.host.ask({true, m_context.extras.Get("EXT0206"), 400, 150}) == CloseDone;
    }
}

Answer RestoreWorker::OnProgress(const RestoreProgress& progress)
{
    if (m_isFull) {
        return Answer::Stop;
    }
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
    const std::string status =
        isGood ? m_context.desktop.Get("DSK0204") : ErrorText(progress.error);
    Report({0, progress.path.string(), status, isGood});
}

// The engine's own words stand, unless there were none or the file came to grief after them. That bytes are missing is told
// beside them.
void RestoreWorker::OnOutcome(bool hasSource, const FileOutcome& outcome)
{
    if (outcome.end == FileEnd::NotTried || outcome.end == FileEnd::Cancelled) {
        return;
    }
    const bool isGood = outcome.end == FileEnd::Restored;
    const bool isLost = outcome.end == FileEnd::Failed;
    ReportRow row = {0, outcome.path.string(), StatusOf(outcome), isGood};
    row.missingBytes = outcome.written && !isGood ? outcome.Missing() : 0;
    m_damaged += row.missingBytes != 0 ? 1 : 0;
    if (!m_row) {
        ++m_processed;
        m_failed += isGood ? 0 : 1;
        if (hasSource && !outcome.faulted) {
            Report(std::move(row));
        }
    } else if (isLost && m_row->isGood) {
        ++m_failed;
        Report(std::move(row));
    } else if (row.missingBytes != 0 || (!row.path.empty() && row.path != m_row->path)) {
        row.path = row.path.empty() ? m_row->path : row.path;  // where it went in the end
        row.status = m_row->status;
        row.isGood = m_row->isGood;
        Report(std::move(row));
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

void RestoreWorker::Report(ReportRow row)
{
    if (m_row) {
        row.number = m_row->number;
        m_context.board.ChangeRow(row);
    } else {
        row.number = m_context.board.AddRow(row);
    }
    m_row = std::move(row);
}

void RestoreWorker::ShowCounts() const
{
    m_context.board.SetText("recovered", FormatText(m_context.messages.Get("MSG1102"), m_processed,
                                                    m_total, m_processed - m_failed, m_failed));
}

void RestoreWorker::ShowSummary() const
{
    m_context.board.SetText("summary", FormatText(m_context.extras.Get("EXT0254"),
                                                  m_processed - m_failed, m_total, m_damaged,
                                                  Printable(m_state.restoreFolder.string())));
}
