#include "app/tasks/TaskGate.h"

#include <array>

void TaskGate::Reset()
{
    cancelRequested = false;
    finished = false;
}

TaskGate& GateOf(TaskKind kind)
{
    static std::array<TaskGate, 6> gates;
    return gates.at(static_cast<std::size_t>(kind));
}
