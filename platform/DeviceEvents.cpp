#include "platform/DeviceEvents.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <libudev.h>
#include <string_view>

namespace {

struct ReleaseContext
{
    void operator()(udev* context) const { ::udev_unref(context); }
};

struct ReleaseDevice
{
    void operator()(udev_device* device) const { ::udev_device_unref(device); }
};

using Device = std::unique_ptr<udev_device, ReleaseDevice>;

// The device manager tells an event once it knows the file system, but without one running its channel stays silent.
const char* EventSource()
{
    std::error_code ignored;
    return std::filesystem::exists("/run/udev/control", ignored) ? "udev" : "kernel";
}

// Asked of the system now, not when the event was made: the later of two changes decides.
bool HasContent(udev_device* device)
{
    const char* size = ::udev_device_get_sysattr_value(device, "size");
    return size != nullptr && std::strtoull(size, nullptr, 10) > 0;
}

// A card reader or loop device never goes: its medium does, which is a change to or from the size 0.
std::optional<DeviceEvent::Kind> KindOf(udev_device* device)
{
    const char* text = ::udev_device_get_action(device);
    const std::string_view action = text != nullptr ? text : "";
    if (action == "add") {
        return DeviceEvent::Kind::Arrival;
    }
    if (action == "remove") {
        return DeviceEvent::Kind::Removal;
    }
    if (action == "change") {
        return HasContent(device) ? DeviceEvent::Kind::Arrival : DeviceEvent::Kind::Removal;
    }
    return std::nullopt;
}

}  // namespace

void DeviceEventMonitor::Release::operator()(udev_monitor* monitor) const
{
    ::udev_monitor_unref(monitor);
}

ResultCode DeviceEventMonitor::Start()
{
    const std::unique_ptr<udev, ReleaseContext> context(::udev_new());
    if (!context) {
        return ResultOutOfMemory;
    }
    errno = 0;
    std::unique_ptr<udev_monitor, Release> monitor(
        ::udev_monitor_new_from_netlink(context.get(), EventSource()));
    if (!monitor) {
        return ErrorFromErrno(errno, FileOperation::Query);
    }
    int failure =
        ::udev_monitor_filter_add_match_subsystem_devtype(monitor.get(), "block", nullptr);
    if (failure >= 0) {
        failure = ::udev_monitor_enable_receiving(monitor.get());
    }
    if (failure < 0) {
        return ErrorFromErrno(-failure, FileOperation::Query);
    }
    m_monitor = std::move(monitor);
    return ResultSuccess;
}

int DeviceEventMonitor::Descriptor() const
{
    return m_monitor ? ::udev_monitor_get_fd(m_monitor.get()) : -1;
}

std::optional<DeviceEvent> DeviceEventMonitor::Next()
{
    while (m_monitor) {
        errno = 0;
        const Device device(::udev_monitor_receive_device(m_monitor.get()));
        if (!device && errno == EINTR) {
            continue;
        }
        if (!device && errno == ENOBUFS) {
            // More came than the system keeps for us. Those are lost, later ones still arrive.
            return DeviceEvent{};
        }
        if (!device) {
            return std::nullopt;
        }
        const char* name = ::udev_device_get_sysname(device.get());
        const std::optional<DeviceEvent::Kind> kind = KindOf(device.get());
        if (kind && name != nullptr) {
            return DeviceEvent{*kind, name};
        }
    }
    return std::nullopt;
}
