// When the list of disks is read anew: at the start, and some seconds after a device has come or gone, when the system has
// mounted it. What comes while a list is being made, or while somebody holds on to targets, waits.
#pragma once

#include "app/wizard/DiskListing.h"
#include "platform/DeviceEvents.h"
#include "ui/controls/ControlUI.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <deque>
#include <functional>
#include <memory>

// The numbers of messages are written as those of a windowing system are.
// NOLINTNEXTLINE(readability-identifier-naming)
inline constexpr std::uint32_t WM_DEVICECHANGE = 0x219;
inline constexpr std::intptr_t DeviceArrival = 0x8000;
inline constexpr std::intptr_t DeviceRemoval = 0x8004;

enum class RefreshKind
{
    Start,
    Arrival,
    Removal
};

// User-interface thread.
class DiskRefresh : public QObject
{
public:
    struct Listed
    {
        RefreshKind kind = RefreshKind::Start;
        TargetList list;
        bool selectsArrived = true;
    };

    // Told to the owner. All have to be set before the first request.
    struct Owner
    {
        std::function<void(const Listed& listed)> apply;  // also a list that could not be made
        std::function<bool()> mayApply;                   // false while targets must not go away
        std::function<bool()> selectsArrived;             // asked when a list is complete
        // A list takes long enough for the user to be told; false when it is there.
        std::function<void(bool isWaiting)> onWaiting;
    };

    DiskRefresh(Session& session, CControlUI& timers, Owner owner);

    void Request(RefreshKind kind);
    // Until all that was asked for is listed; what is listed may have to wait to be applied.
    bool IsListing() const { return !m_requests.empty(); }
    // An arrival or removal, which the timers of the control put off.
    void OnDeviceChange(std::intptr_t event);
    // One of those timers.
    void OnTimer(std::intptr_t number);
    // Calls back with arrivals and removals of devices from now on.
    void Watch(std::function<void(std::intptr_t event)> onEvent);

private:
    void StartNext();
    void OnListed(const TargetList& list);
    void ApplyPending();
    void TellEvents();

    CControlUI& m_timers;
    Owner m_owner;
    std::deque<RefreshKind> m_requests;  // the first one is being listed
    std::deque<Listed> m_pending;        // that may not be applied yet
    QTimer m_retry;
    QTimer m_waitDelay;
    DiskListing m_listing;
    DeviceEventMonitor m_monitor;
    std::function<void(std::intptr_t event)> m_onEvent;
    std::unique_ptr<QSocketNotifier> m_notifier;
};
