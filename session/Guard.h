// What keeps an exception from ending the thread, and so the process, that runs a task. For this room alone.
#pragma once

#include "platform/ResultCode.h"

#include <new>

// The result of the work, or what stands for an exception that it has thrown.
template <class Work>
ResultCode RunGuarded(const Work& work)
{
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return ResultOutOfMemory;
    } catch (...) {
        return ResultGeneralFailure;
    }
}
