// Gathers what was found on targets that were scanned.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "app/tasks/TaskContext.h"

#include <string>
#include <vector>

class SearchWorker
{
public:
    SearchWorker(TaskContext context, RecoveryState& state);

    std::vector<RecoveryTarget*> targets;
    std::string pattern;  // as the engines read it

    // What it finds goes after the results of the state, which nobody else touches meanwhile.
    void Run();

private:
    bool SearchAll(bool& isStopped);

    TaskContext m_context;
    RecoveryState& m_state;
};
