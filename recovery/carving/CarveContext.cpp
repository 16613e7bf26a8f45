#include "recovery/carving/CarveContext.h"

#include <algorithm>
#include <iterator>

void TsRanges::Add(std::uint64_t firstLba, std::uint64_t lastLba)
{
    if (m_onAdded) {
        m_onAdded(firstLba, lastLba);
    }
    auto next = m_ranges.upper_bound(firstLba);
    if (next != m_ranges.begin() && std::prev(next)->second >= firstLba) {
        --next;
        firstLba = next->first;
    }
    while (next != m_ranges.end() && next->first <= lastLba) {
        lastLba = std::max(lastLba, next->second);
        next = m_ranges.erase(next);
    }
    m_ranges[firstLba] = lastLba;
}

bool TsRanges::Contains(std::uint64_t lba) const
{
    const auto next = m_ranges.upper_bound(lba);
    return next != m_ranges.begin() && std::prev(next)->second >= lba;
}

CarveContext& CarveContext::Instance()
{
    static CarveContext context;
    return context;
}
