#include "app/wizard/DiskRefresh.h"

#include <utility>

namespace {

constexpr int ArrivalTimer = 0;
constexpr int RemovalTimer = 1;
// In which the system mounts what has come.
constexpr int DelayMilliseconds = 5000;
constexpr int RetryMilliseconds = 100;
constexpr int WaitMilliseconds = 300;

}  // namespace

DiskRefresh::DiskRefresh(Session& session, CControlUI& timers, Owner owner)
    : m_timers(timers),
      m_owner(std::move(owner)),
      m_listing(session, [this](const TargetList& list) { OnListed(list); })
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryMilliseconds);
    connect(&m_retry, &QTimer::timeout, this, [this] { ApplyPending(); });
    m_waitDelay.setSingleShot(true);
    m_waitDelay.setInterval(WaitMilliseconds);
    connect(&m_waitDelay, &QTimer::timeout, this, [this] { m_owner.onWaiting(true); });
}

void DiskRefresh::Request(RefreshKind kind)
{
    m_requests.push_back(kind);
    StartNext();
}

void DiskRefresh::StartNext()
{
    if (!m_requests.empty() && !m_listing.IsRunning()) {
        m_waitDelay.start();
        m_listing.Start();
    }
}

void DiskRefresh::OnListed(const TargetList& list)
{
    m_waitDelay.stop();
    m_owner.onWaiting(false);
    if (list.end != ListEnd::Stopped) {
        m_pending.push_back({m_requests.front(), list, m_owner.selectsArrived()});
    }
    m_requests.pop_front();
    ApplyPending();
    StartNext();
}

void DiskRefresh::ApplyPending()
{
    while (!m_pending.empty() && m_owner.mayApply()) {
        const Listed next = std::move(m_pending.front());
        m_pending.pop_front();
        m_owner.apply(next);
    }
    if (!m_pending.empty()) {
        m_retry.start();
    }
}

void DiskRefresh::OnDeviceChange(std::intptr_t event)
{
    // One that runs begins anew: the last of several events counts.
    if (event == DeviceArrival) {
        m_timers.SetTimer(ArrivalTimer, DelayMilliseconds);
    } else if (event == DeviceRemoval) {
        m_timers.SetTimer(RemovalTimer, DelayMilliseconds);
    }
}

void DiskRefresh::OnTimer(std::intptr_t number)
{
    m_timers.KillTimer(ArrivalTimer);
    m_timers.KillTimer(RemovalTimer);
    Request(number == ArrivalTimer ? RefreshKind::Arrival : RefreshKind::Removal);
}

void DiskRefresh::Watch(std::function<void(std::intptr_t event)> onEvent)
{
    // Without a device manager disks that come later are not seen; there is nothing else to be done about it.
    if (m_monitor.Start() != ResultSuccess) {
        return;
    }
    m_onEvent = std::move(onEvent);
    m_notifier = std::make_unique<QSocketNotifier>(m_monitor.Descriptor(), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { TellEvents(); });
}

void DiskRefresh::TellEvents()
{
    while (const std::optional<DeviceEvent> event = m_monitor.Next()) {
        const bool isLost = event->name.empty();
        if (isLost || event->kind == DeviceEvent::Kind::Arrival) {
            m_onEvent(DeviceArrival);
        }
        if (isLost || event->kind == DeviceEvent::Kind::Removal) {
            m_onEvent(DeviceRemoval);
        }
    }
}
