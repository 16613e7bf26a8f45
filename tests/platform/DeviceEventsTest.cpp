// Arrivals and removals, on loop devices. Other devices of the machine may come and go meanwhile.
#include "platform/DeviceEvents.h"

#include "tests/support/Bytes.h"
#include "tests/support/LoopDevice.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <poll.h>
#include <sys/socket.h>

namespace {

using Wanted = std::function<bool(const DeviceEvent&)>;

class DeviceEventsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (const std::string reason = LoopDevice::WhyNot(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        ASSERT_EQ(m_monitor.Start(), ResultSuccess);
        ASSERT_GE(m_monitor.Descriptor(), 0);
    }

    // Waits on the descriptor as the desktop program does; false when nothing such came for ten seconds.
    bool Arrives(const Wanted& wanted)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (std::chrono::steady_clock::now() < end) {
            pollfd waiting = {m_monitor.Descriptor(), POLLIN, 0};
            (void)::poll(&waiting, 1, 100);
            while (const std::optional<DeviceEvent> event = m_monitor.Next()) {
                if (wanted(*event)) {
                    return true;
                }
            }
        }
        return false;
    }

    bool Arrives(DeviceEvent::Kind kind, const std::string& name)
    {
        return Arrives(
            [&](const DeviceEvent& event) { return event.kind == kind && event.name == name; });
    }

    TempFolder m_folder;
    ImageFile m_file{m_folder / "disk", 1024 * 1024};
    DeviceEventMonitor m_monitor;
};

TEST_F(DeviceEventsTest, AttachedAndDetachedDevicesAreTold)
{
    auto device = std::make_unique<LoopDevice>(m_file.Path());
    const std::string name = device->Node().filename().string();
    EXPECT_TRUE(Arrives(DeviceEvent::Kind::Arrival, name));
    device.reset();
    EXPECT_TRUE(Arrives(DeviceEvent::Kind::Removal, name));
}

TEST_F(DeviceEventsTest, NothingToTellIsNotWaitedFor)
{
    EXPECT_EQ(DeviceEventMonitor().Descriptor(), -1);
    EXPECT_FALSE(DeviceEventMonitor().Next());
    while (m_monitor.Next()) {
    }
}

// More events than the system keeps for a listener who does not listen: told as "look again", and it goes on.
TEST_F(DeviceEventsTest, AFloodIsSurvived)
{
    auto device = std::make_unique<LoopDevice>(m_file.Path());
    const std::string name = device->Node().filename().string();
    const int smallBuffer = 4096;
    ASSERT_EQ(::setsockopt(m_monitor.Descriptor(), SOL_SOCKET, SO_RCVBUF, &smallBuffer,
                           sizeof smallBuffer),
              0);
    for (int count = 0; count < 500; ++count) {
        std::ofstream trigger("/sys/block/" + name + "/uevent");
        trigger << "change" << std::flush;
        if (!trigger) {
            GTEST_SKIP() << "events cannot be made here";
        }
    }
    EXPECT_TRUE(Arrives([](const DeviceEvent& event) {
        return event.kind == DeviceEvent::Kind::Arrival && event.name.empty();
    }));
    device.reset();
    EXPECT_TRUE(Arrives(DeviceEvent::Kind::Removal, name));
}

}  // namespace
