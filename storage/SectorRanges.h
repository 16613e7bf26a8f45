// A set of sectors, kept as ranges that neither touch nor overlap.
#pragma once

#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

class SectorRanges
{
public:
    void Add(std::uint64_t first, std::uint64_t count)
    {
        if (count == 0 || first > UINT64_MAX - count) {
            return;
        }
        std::uint64_t end = first + count;
        auto next = m_ends.upper_bound(first);
        if (next != m_ends.begin() && std::prev(next)->second >= first) {
            --next;
            first = next->first;
        }
        while (next != m_ends.end() && next->first <= end) {
            end = end > next->second ? end : next->second;
            next = m_ends.erase(next);
        }
        m_ends[first] = end;
    }
    void AddAll(const SectorRanges& others)
    {
        for (const auto& [first, end] : others.m_ends) {
            Add(first, end - first);
        }
    }

    // The first range that ends after a sector; it may begin before it.
    std::optional<std::pair<std::uint64_t, std::uint64_t>> NextFrom(std::uint64_t sector) const
    {
        auto next = m_ends.upper_bound(sector);
        if (next != m_ends.begin() && std::prev(next)->second > sector) {
            --next;
        }
        return next != m_ends.end() ? std::optional(std::pair(next->first, next->second))
                                    : std::nullopt;
    }

    bool Empty() const { return m_ends.empty(); }
    std::size_t Places() const { return m_ends.size(); }
    std::uint64_t Sectors() const
    {
        std::uint64_t sum = 0;
        for (const auto& [first, end] : m_ends) {
            sum += end - first;
        }
        return sum;
    }
    // First sector to the one after the last, in ascending order.
    const std::map<std::uint64_t, std::uint64_t>& Ends() const { return m_ends; }

private:
    std::map<std::uint64_t, std::uint64_t> m_ends;
};
