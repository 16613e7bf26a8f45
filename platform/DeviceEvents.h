// Tells when a block device comes or goes: a stick, a card in its reader, a loop device. What it is then is for the list of
// devices to find out.
#pragma once

#include "platform/ResultCode.h"

#include <memory>
#include <optional>
#include <string>

struct udev_monitor;

struct DeviceEvent
{
    enum class Kind
    {
        Arrival,
        Removal
    };

    Kind kind = Kind::Arrival;
    // "sdb1"; empty when events were lost, and all devices have to be looked at again.
    std::string name;
};

// Listens to the device manager where one runs, else to the kernel. Used by one thread; needs no rights.
class DeviceEventMonitor
{
public:
    // Events before this call are not told; what was there before is for the list of devices.
    [[nodiscard]] ResultCode Start();
    // Becomes readable when Next() may have something to tell; -1 before Start(). It stays ours.
    int Descriptor() const;
    // The next arrival or removal without waiting for one; nothing when all were told. To be called until then.
    std::optional<DeviceEvent> Next();

private:
    struct Release
    {
        void operator()(udev_monitor* monitor) const;
    };

    std::unique_ptr<udev_monitor, Release> m_monitor;
};
