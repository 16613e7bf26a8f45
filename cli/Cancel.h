// Ctrl-C, and a terminal that closes: a flag that the engines' callbacks look at.
#pragma once

// While it lives, an interrupt, termination or hang-up signal asks the work to stop instead of ending the process. A
// second one ends it.
class CancelScope
{
public:
    CancelScope();
    CancelScope(const CancelScope&) = delete;
    CancelScope& operator=(const CancelScope&) = delete;
    ~CancelScope();

    static bool Requested();
};

// While it lives, the signals end the process as they do by themselves: at a question there is no work that could stop.
class CancelPause
{
public:
    CancelPause();
    CancelPause(const CancelPause&) = delete;
    CancelPause& operator=(const CancelPause&) = delete;
    ~CancelPause();

private:
    using Handler = void (*)(int);
    Handler m_onInterrupt;
    Handler m_onTermination;
};
