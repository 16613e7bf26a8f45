#include "cli/Cancel.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t cancelRequested = 0;

extern "C" void OnCancelSignal(int number)
{
    cancelRequested = 1;
    std::signal(number, SIG_DFL);
}

}  // namespace

CancelScope::CancelScope()
{
    cancelRequested = 0;
    std::signal(SIGINT, &OnCancelSignal);
    std::signal(SIGTERM, &OnCancelSignal);
    std::signal(SIGHUP, &OnCancelSignal);
}

CancelScope::~CancelScope()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
}

CancelPause::CancelPause()
    : m_onInterrupt(std::signal(SIGINT, SIG_DFL)), m_onTermination(std::signal(SIGTERM, SIG_DFL))
{
}

CancelPause::~CancelPause()
{
    std::signal(SIGINT, m_onInterrupt);
    std::signal(SIGTERM, m_onTermination);
}

bool CancelScope::Requested()
{
    return cancelRequested != 0;
}
