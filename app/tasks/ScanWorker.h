// Scans targets one after the other, each with an engine of its own.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "app/tasks/TaskContext.h"
#include "recovery/ScanDepth.h"

#include <optional>
#include <vector>

class ScanWorker
{
public:
    ScanWorker(TaskContext context, Session& session);

    std::vector<RecoveryTarget*> targets;
    int engineMode = 1;  // 1: an earlier scan may be resumed
    ScanDepth depth = ScanDepth::Deep;
    std::vector<ScanOutcome> outcomes;     // of the targets that were scanned, in their order
    std::optional<TargetRefusal> refusal;  // of the target that could not be opened

    // Told of each target before it is scanned; what comes with it draws how far that is, and may be null.
    std::function<void(std::function<std::string(std::size_t cells)> strip)> onTarget;

    void Run();

private:
    enum class Opened
    {
        Yes,
        Left,    // by the user
        Told,    // not opened, and the user knows why
        Refused  // not opened
    };

    bool ScanAll();
    Opened Open(RecoveryTarget& target);
    Opened TellWhyNot(const RecoveryTarget& target, const OpenOutcome& outcome);
    EarlierChoice AskForEarlier(const ScanSession& engine) const;
    Answer OnProgress(const Progress& progress) const;

    TaskContext m_context;
    Session& m_session;
};
