#include "app/wizard/DiskListing.h"

#include <QCoreApplication>
#include <QEvent>

namespace {

QEvent::Type ListedEvent()
{
    static const int registered = QEvent::registerEventType();
    return static_cast<QEvent::Type>(registered);
}

}  // namespace

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
        QCoreApplication::postEvent(this, new QEvent(ListedEvent()));
    });
}

bool DiskListing::event(QEvent* event)
{
    if (event->type() != ListedEvent()) {
        return QObject::event(event);
    }
    m_isRunning = false;
    m_done(m_list);
    return true;
}
