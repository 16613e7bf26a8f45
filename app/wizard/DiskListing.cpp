#include "app/wizard/DiskListing.h"

#include <memory>

DiskListing::~DiskListing()
{
    m_stops = true;
    Join();
}

void DiskListing::Join()
{
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void DiskListing::Start()
{
    if (m_isRunning) {
        return;
    }
    m_isRunning = true;
    Join();
    m_thread = std::thread([this] {
        const auto list = std::make_shared<TargetList>(m_session.ListTargets(
            [this](const Progress&) { return m_stops ? Answer::Stop : Answer::GoOn; }));
        // Dropped when this object is gone by then.
        QMetaObject::invokeMethod(
            this,
            [this, list] {
                m_isRunning = false;
                m_done(*list);
            },
            Qt::QueuedConnection);
    });
}
