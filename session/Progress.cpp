#include "session/Progress.h"

std::int32_t WholePercent(std::int32_t partPercent, std::int32_t range)
{
    return static_cast<std::int32_t>(std::int64_t{partPercent} * range / 100);
}
