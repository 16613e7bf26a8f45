#include "platform/Terminal.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

bool StandardErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

std::size_t StandardErrorColumns()
{
    winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool StandardInputIsTerminal()
{
    return ::isatty(STDIN_FILENO) == 1;
}

bool StandardOutputHasNoReader()
{
    pollfd stream = {STDOUT_FILENO, POLLOUT, 0};
    return ::poll(&stream, 1, 0) == 1 && (stream.revents & POLLERR) != 0;
}

void OpenStandardStreams()
{
    // Descriptors are given out from below, so that each gap is filled in its turn.
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0 && errno == EBADF) {
            (void)::open("/dev/null", O_RDWR);  // it stays open as long as the process
        }
    }
}
