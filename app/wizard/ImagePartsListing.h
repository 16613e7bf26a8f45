// Finds out what images are cut into, on a thread of its own: their tables say how full the parts are, which takes long to read.
#pragma once

#include "session/TargetParts.h"

#include <QObject>
#include <QTimer>

#include <atomic>
#include <deque>
#include <functional>
#include <thread>

// User-interface thread.
class ImagePartsListing : public QObject
{
public:
    struct Owner
    {
        std::function<bool()> mayApply;  // asked again until it says yes
        std::function<void(char16_t imageId, const TargetParts& parts)> apply;
    };

    explicit ImagePartsListing(Owner owner);
    ImagePartsListing(const ImagePartsListing&) = delete;
    ImagePartsListing& operator=(const ImagePartsListing&) = delete;
    // Stops what runs, and waits for it.
    ~ImagePartsListing() override;

    // One image after the other.
    void Start(char16_t imageId, const ScanTarget& image);

protected:
    // What the thread tells when it is done.
    bool event(QEvent* event) override;

private:
    struct Image
    {
        char16_t id = 0;
        ScanTarget place;
    };

    void RunNext();
    void Apply();

    Owner m_owner;
    std::deque<Image> m_waiting;  // the first is being looked at, or about to be shown
    TargetParts m_parts;          // the thread's own while it runs
    QTimer m_retry;
    std::atomic<bool> m_stops = false;
    std::thread m_thread;
};
