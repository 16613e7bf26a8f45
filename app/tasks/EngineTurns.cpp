#include "app/tasks/EngineTurns.h"

#include <chrono>

EngineTurns::Task::Task(EngineTurns& turns) : m_turns(turns)
{
    std::unique_lock held(m_turns.m_lock);
    ++m_turns.m_tasks;
    m_turns.m_hasEnded.wait(held, [this] { return !m_turns.m_isBackgroundAtWork; });
}

EngineTurns::Task::~Task()
{
    m_turns.EndTask();
}

void EngineTurns::EndTask()
{
    const std::lock_guard held(m_lock);
    --m_tasks;
}

bool EngineTurns::BeginShortly()
{
    constexpr std::chrono::milliseconds Moment{200};
    std::unique_lock held(m_lock);
    if (m_tasks > 0) {
        return false;
    }
    ++m_tasks;
    if (!m_hasEnded.wait_for(held, Moment, [this] { return !m_isBackgroundAtWork; })) {
        --m_tasks;
        return false;
    }
    return true;
}

bool EngineTurns::IsTaskWaiting() const
{
    const std::lock_guard held(m_lock);
    return m_tasks > 0;
}

bool EngineTurns::Begin()
{
    const std::lock_guard held(m_lock);
    m_isBackgroundAtWork = m_tasks == 0;
    return m_isBackgroundAtWork;
}

void EngineTurns::End()
{
    const std::lock_guard held(m_lock);
    m_isBackgroundAtWork = false;
    m_hasEnded.notify_all();
}
