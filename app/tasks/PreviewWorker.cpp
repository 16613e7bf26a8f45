#include "app/tasks/PreviewWorker.h"

#include "app/tasks/CloseCode.h"
#include "recovery/FileTypeCatalogue.h"

#include <algorithm>
#include <thread>
#include <utility>

PreviewWorker::PreviewWorker(TaskContext context, const RecoveryState& state, PreviewData& data)
    : m_context(std::move(context)), m_state(state), m_data(data)
{
}

void PreviewWorker::Run()
{
    m_data.row = row;
    m_data.dataSize = PreviewData::Capacity;
    m_data.isPlayable = false;
    m_data.isAudio = false;
    // An empty extension is in every family; a file without one is none of them here.
    const std::string extension = LowerExtensionOf(row.record.NameText());
    if (!extension.empty()) {
        m_data.isAudio = InFamily(FamilyAudio, extension);
        m_data.isPlayable = m_data.isAudio || InFamily(FamilyVideo, extension);
    }
    if (killPlayers) {
        killPlayers();
    }
    if (m_data.isPlayable) {
        std::this_thread::sleep_for(playerDelay);
    }
    m_data.tempPath.clear();
    const bool isStopped = Fetch();
    m_context.gate.finished = true;
    m_context.host.close(isStopped ? CloseCancelled : CloseDone);
}

// True when the user has stopped it. What fails leaves an empty path and no bytes.
bool PreviewWorker::Fetch()
{
    m_data.dataSize = 0;
    const std::shared_ptr<ScanSession> engine = m_state.FindEngine(row.record);
    if (engine == nullptr) {
        return false;
    }
    PreviewOutcome outcome =
        engine->Preview(row.record, PreviewData::Capacity, [this](const Progress& progress) {
            return TellProgress(m_context.gate,
                                [&] { ShowPercent(m_context, "MSG0901", progress.percent); });
        });
    m_data.tempPath = std::move(outcome.file);
    m_data.dataSize = static_cast<std::uint32_t>(outcome.bytes.size());
    std::copy(outcome.bytes.begin(), outcome.bytes.end(), m_data.buffer.begin());
    return outcome.stopped;
}
