#include "platform/Terminal.h"

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
