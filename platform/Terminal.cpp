#include "platform/Terminal.h"

#include <unistd.h>

bool StandardErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}

bool StandardInputIsTerminal()
{
    return ::isatty(STDIN_FILENO) == 1;
}
