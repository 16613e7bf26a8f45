#include "app/tasks/CancelQuestion.h"

CancelAnswer CancelQuestion::Ask(const std::function<bool()>& isToStop)
{
    if (m_isOpen || m_gate.finished || m_gate.cancelRequested) {
        return CancelAnswer::NotAsked;
    }
    m_isOpen = true;
    bool stops = false;
    {
        const std::lock_guard held(m_gate.lock);
        stops = isToStop();
        if (stops) {
            m_gate.cancelRequested = true;
        }
    }
    m_isOpen = false;
    return stops ? CancelAnswer::Stop : CancelAnswer::GoOn;
}

void CancelQuestion::WaitForEnd(const std::function<bool()>& isGone,
                                const std::function<void()>& waitABit) const
{
    while (!m_gate.finished && !isGone()) {
        waitABit();
    }
}
