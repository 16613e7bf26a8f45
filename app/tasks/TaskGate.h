// What a task's worker and its window share: a lock that makes the worker stand still, and two flags.
#pragma once

#include <atomic>
#include <mutex>

enum class TaskKind
{
    Scan,
    Search,
    Restore,
    Preview,
    Image,
    Rescue
};

// A worker's callback holds the lock while it tells how far it is; the question whether to stop holds it while it is open.
struct TaskGate
{
    std::mutex lock;
    std::atomic<bool> cancelRequested = false;  // by the user; the next callback ends the work
    std::atomic<bool> finished =
        false;  // the worker's last act, but for ways out that leave it alone

    void Reset();
};

// One of each kind in the process, so that no two tasks of a kind run at once.
TaskGate& GateOf(TaskKind kind);
