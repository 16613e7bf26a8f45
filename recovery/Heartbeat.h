// When a long phase that has nothing new to say is to say it again.
#pragma once

#include "platform/FileTime.h"

#include <cstdint>

class Heartbeat
{
public:
    // True for the first time half a second after it was made, then twice a second.
    bool IsDue()
    {
        const std::uint64_t now = TickMilliseconds();
        if (now - m_last < Interval) {
            return false;
        }
        m_last = now;
        return true;
    }

private:
    static constexpr std::uint64_t Interval = 500;  // milliseconds

    std::uint64_t m_last = TickMilliseconds();
};
