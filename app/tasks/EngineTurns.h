// Whose turn it is to use the engines of the targets, which take one thread at a time: a task that the user waits for goes before
// what is done in the background, which is told to stop and does so at its next step.
#pragma once

#include <condition_variable>
#include <mutex>

class EngineTurns
{
public:
    // Held as long as engines are used. Its maker waits until the background has stopped, so it is no thread of windows that
    // makes it. Several may stand at once, where they know of each other.
    class Task
    {
    public:
        explicit Task(EngineTurns& turns);
        Task(const Task&) = delete;
        Task& operator=(const Task&) = delete;
        ~Task();

    private:
        EngineTurns& m_turns;
    };

    // Runs the work, unless a task has the engines. The work asks IsTaskWaiting() at each step. One thread.
    template <typename Work>
    bool RunInBackground(const Work& work)
    {
        if (!Begin()) {
            return false;
        }
        const Ending ending(*this, &EngineTurns::End);
        work();
        return true;
    }
    // For the thread of windows: runs work that takes no time, unless a task has the engines, or the background does not stop
    // within a moment, as on a disk that hangs.
    template <typename Work>
    bool RunShortly(const Work& work)
    {
        if (!BeginShortly()) {
            return false;
        }
        const Ending ending(*this, &EngineTurns::EndTask);
        work();
        return true;
    }
    bool IsTaskWaiting() const;

private:
    class Ending
    {
    public:
        Ending(EngineTurns& turns, void (EngineTurns::*end)()) : m_turns(turns), m_end(end) {}
        Ending(const Ending&) = delete;
        Ending& operator=(const Ending&) = delete;
        ~Ending() { (m_turns.*m_end)(); }

    private:
        EngineTurns& m_turns;
        void (EngineTurns::*m_end)();
    };

    bool Begin();
    void End();
    bool BeginShortly();
    void EndTask();

    mutable std::mutex m_lock;
    std::condition_variable m_hasEnded;
    int m_tasks = 0;
    bool m_isBackgroundAtWork = false;
};
