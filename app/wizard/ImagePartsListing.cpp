#include "app/wizard/ImagePartsListing.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace {

constexpr int RetryMilliseconds = 100;

QEvent::Type ListedEvent()
{
    static const int registered = QEvent::registerEventType();
    return static_cast<QEvent::Type>(registered);
}

}  // namespace

ImagePartsListing::ImagePartsListing(Owner owner) : m_owner(std::move(owner))
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryMilliseconds);
    connect(&m_retry, &QTimer::timeout, this, [this] { Apply(); });
}

ImagePartsListing::~ImagePartsListing()
{
    m_stops = true;
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void ImagePartsListing::Start(char16_t imageId, const ScanTarget& image)
{
    m_waiting.push_back({imageId, image});
    if (m_waiting.size() == 1) {
        RunNext();
    }
}

void ImagePartsListing::RunNext()
{
    m_thread = std::thread([this, place = m_waiting.front().place] {
        m_parts = PartsOf(place, PartFacts::Space, [this] { return !m_stops; });
        // Dropped when this object is gone by then.
        QCoreApplication::postEvent(this, new QEvent(ListedEvent()));
    });
}

bool ImagePartsListing::event(QEvent* event)
{
    if (event->type() != ListedEvent()) {
        return QObject::event(event);
    }
    m_thread.join();
    Apply();
    return true;
}

void ImagePartsListing::Apply()
{
    if (!m_owner.mayApply()) {
        m_retry.start();
        return;
    }
    const Image image = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_owner.apply(image.id, std::exchange(m_parts, {}));
    if (!m_waiting.empty()) {
        RunNext();
    }
}
