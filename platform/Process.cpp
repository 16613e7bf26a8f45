#include "platform/Process.h"

#include <cerrno>
#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

std::int32_t ProcessNumber()
{
    return ::getpid();
}

void RaiseOpenFileLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        (void)::setrlimit(RLIMIT_NOFILE,
                          &limit);  // with fewer, parts that cannot be opened are told
    }
}

bool ProcessIsAlive(std::int32_t number)
{
    return ::kill(number, 0) == 0 || errno != ESRCH;
}
