#include "platform/Terminal.h"

#include <unistd.h>

bool StandardErrorIsTerminal()
{
    return ::isatty(STDERR_FILENO) == 1;
}
