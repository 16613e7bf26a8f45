// How a task is stopped by its user: the question holds the gate's lock, so that the worker stands still until it is answered.
#pragma once

#include "app/tasks/TaskGate.h"

#include <functional>

enum class CancelAnswer
{
    NotAsked,  // a question is open already, or there is nothing to stop any more
    GoOn,
    Stop
};

// One thread uses it, the one that asks; asking may come back to it.
class CancelQuestion
{
public:
    explicit CancelQuestion(TaskGate& gate) : m_gate(gate) {}

    CancelAnswer Ask(const std::function<bool()>& isToStop);
    // After a yes, until the worker has finished, or will never say so.
    void WaitForEnd(const std::function<bool()>& isGone,
                    const std::function<void()>& waitABit) const;

private:
    TaskGate& m_gate;
    bool m_isOpen = false;
};
