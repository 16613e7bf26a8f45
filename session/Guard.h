// What keeps an exception from ending the thread, and so the process, that runs a task. For this room alone.
#pragma once

#include "platform/ResultCode.h"

#include <new>
#include <type_traits>

// The result of the work, or what stands for an exception that it has thrown.
template <class Work>
ResultCode RunGuarded(const Work& work)
{
    try {
        if constexpr (std::is_void_v<decltype(work())>) {
            work();
            return ResultSuccess;
        } else {
            return work();
        }
    } catch (const std::bad_alloc&) {
        return ResultOutOfMemory;
    } catch (...) {
        return ResultGeneralFailure;
    }
}
