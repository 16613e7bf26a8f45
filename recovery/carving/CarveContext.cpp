#include "recovery/carving/CarveContext.h"

#include <algorithm>
#include <iterator>

void TsRanges::Add(std::uint64_t firstLba, std::uint64_t lastLba)
{
    auto next = ranges.upper_bound(firstLba);
    if (next != ranges.begin() && std::prev(next)->second >= firstLba) {
        --next;
        firstLba = next->first;
    }
    while (next != ranges.end() && next->first <= lastLba) {
        lastLba = std::max(lastLba, next->second);
        next = ranges.erase(next);
    }
    ranges[firstLba] = lastLba;
}

bool TsRanges::Contains(std::uint64_t lba) const
{
    const auto next = ranges.upper_bound(lba);
    return next != ranges.begin() && std::prev(next)->second >= lba;
}

CarveContext& CarveContext::Instance()
{
    static CarveContext context;
    return context;
}
