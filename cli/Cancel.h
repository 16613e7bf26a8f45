// Ctrl-C: a flag that the engines' callbacks look at.
#pragma once

// While it lives, an interrupt or termination signal asks the work to stop instead of ending the process. A
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
