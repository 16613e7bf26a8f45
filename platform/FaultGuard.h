// What becomes of a hardware fault: one inside a guarded piece of work ends that work alone, any other one leaves a dump
// and ends the process.
#pragma once

#include <filesystem>
#include <functional>

// Once, before threads start. A dump goes to the current directory, else to the folder given.
void InstallFaultHandler(const std::filesystem::path& otherFolder);

// Does the work; false when a fault has ended it (a bad address, a division by zero, a stack that ran over). What the work
// held is not given back then: no destructor runs, so it must hold no lock that others wait for. Exceptions pass through. Not to
// be nested. Needs no InstallFaultHandler() before.
bool RunWithFaultGuard(const std::function<void()>& work);
