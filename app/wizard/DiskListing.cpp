#include "app/wizard/DiskListing.h"

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
        m_list = m_session.ListTargets(
            [this](const Progress&) { return m_stops ? Answer::Stop : Answer::GoOn; });
        // Dropped when this object is gone by then.
        QMetaObject::invokeMethod(this, &DiskListing::Finish, Qt::QueuedConnection);
    });
}

void DiskListing::Finish()
{
    m_isRunning = false;
    m_done(m_list);
}
