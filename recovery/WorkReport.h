// How a phase that has no figures of its own, and can take long, stays in touch with whoever waits for it.
#pragma once

#include "platform/ResultCode.h"

#include <functional>

// Called often; cheap when nothing is due. 0 goes on, anything else ends the phase and becomes its result.
using WorkReport = std::function<ResultCode()>;
