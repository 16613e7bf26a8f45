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

// A further one ends the process at once: a worker may hang in a read that never comes back.
extern "C" void OnTerminationSignal(int number)
{
    std::signal(number, SIG_DFL);
    const int errorBefore = errno;
    const char mark = 1;
    (void)!::write(pipeEnds[1], &mark, 1);  // a pipe that is full says it already
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
    ::alarm(0);
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

void TerminationSignals::EndWithin(unsigned seconds)
{
    ::alarm(seconds);
}

int TerminationSignals::Descriptor() const
{
    return pipeEnds[0];
}
