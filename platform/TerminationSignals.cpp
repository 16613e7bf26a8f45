#include "platform/TerminationSignals.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array Signals = {SIGINT, SIGTERM, SIGHUP};

// Read by a signal handler, so neither of them moves while the handler is in place.
std::array<int, 2> pipeEnds = {-1, -1};

extern "C" void OnTerminationSignal(int /*number*/)
{
    const int errorBefore = errno;
    const char mark = 1;
    // A pipe that is full says it already.
    if (::write(pipeEnds[1], &mark, 1) < 0) {
        errno = errorBefore;
    }
    errno = errorBefore;
}

}  // namespace

TerminationSignals::TerminationSignals()
{
    if (::pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        pipeEnds = {-1, -1};
        return;
    }
    for (const int number : Signals) {
        std::signal(number, &OnTerminationSignal);
    }
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : Signals) {
        std::signal(number, SIG_DFL);
    }
    for (int& end : pipeEnds) {
        if (end >= 0) {
            ::close(end);
        }
        end = -1;
    }
}

int TerminationSignals::Descriptor() const
{
    return pipeEnds[0];
}
