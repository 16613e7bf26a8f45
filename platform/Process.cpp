#include "platform/Process.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

std::int32_t ProcessNumber()
{
    return ::getpid();
}

bool ProcessIsAlive(std::int32_t number)
{
    return ::kill(number, 0) == 0 || errno != ESRCH;
}
