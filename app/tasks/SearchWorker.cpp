#include "app/tasks/SearchWorker.h"

#include "app/tasks/CloseCode.h"
#include "texts/LanguageSection.h"

#include <iterator>
#include <utility>

namespace {

constexpr StageKeys SearchStage = {"MSG1201", "MSG1202", "MSG1203"};

}  // namespace

SearchWorker::SearchWorker(TaskContext context, RecoveryState& state)
    : m_context(std::move(context)), m_state(state)
{
}

void SearchWorker::Run()
{
    if (targets.empty()) {
        m_context.host.close(CloseDone);
        m_context.gate.finished = true;
        return;
    }
    bool isStopped = false;
    if (!SearchAll(isStopped)) {
        m_context.host.close(CloseDone);
        return;
    }
    m_context.gate.finished = true;
    m_context.host.postDone();
    // What was listed until the user stopped it is shown, and the window was cancelled all the same.
    m_context.host.close(isStopped ? CloseCancelled : CloseDone);
}

// False when a target has no engine: then nothing is shown of those before it either.
bool SearchWorker::SearchAll(bool& isStopped)
{
    for (const RecoveryTarget* const target : targets) {
        const std::shared_ptr<ScanSession> engine = target->engine;
        if (engine == nullptr) {
            return false;
        }
        m_context.board.SetText("stage", StageText(m_context.messages, SearchStage, *target));
        SearchOutcome outcome = engine->Search(pattern, [this](const Progress& progress) {
            return TellProgress(m_context.gate,
                                [&] { ShowPercent(m_context, "MSG1204", progress.percent); });
        });
        m_state.results.insert(m_state.results.end(), std::make_move_iterator(outcome.rows.begin()),
                               std::make_move_iterator(outcome.rows.end()));
        isStopped = outcome.stopped;
        if (isStopped) {
            break;
        }
    }
    return true;
}
