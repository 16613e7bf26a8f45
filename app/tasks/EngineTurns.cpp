#include "app/tasks/EngineTurns.h"

EngineTurns::Task::Task(EngineTurns& turns) : m_turns(turns)
{
    std::unique_lock held(m_turns.m_lock);
    ++m_turns.m_tasks;
    m_turns.m_hasEnded.wait(held, [this] { return !m_turns.m_isBackgroundAtWork; });
}

EngineTurns::Task::~Task()
{
    const std::lock_guard held(m_turns.m_lock);
    --m_turns.m_tasks;
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
