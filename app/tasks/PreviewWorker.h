// Fetches one file for a preview.
#pragma once

#include "app/tasks/PreviewData.h"
#include "app/tasks/RecoveryState.h"
#include "app/tasks/TaskContext.h"

#include <chrono>

class PreviewWorker
{
public:
    // Nobody else touches the data until it has run.
    PreviewWorker(TaskContext context, const RecoveryState& state, PreviewData& data);

    FoundRow row;
    std::function<void()> killPlayers;
    // A player that was ended needs it to let go of its file.
    std::chrono::milliseconds playerDelay{1000};

    void Run();

private:
    bool Fetch();

    TaskContext m_context;
    const RecoveryState& m_state;
    PreviewData& m_data;
};
