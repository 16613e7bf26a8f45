// The sectors that the measuring of a file has gone through and found to begin nothing: shown to the carver again they would
// be read, looked at and passed over once more.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

class FreeStretch
{
public:
    // Forgets what it knows. Nothing is taken until a stretch is begun.
    void Clear() { *this = {}; }
    // The sectors from first on are looked at next, one after the other.
    void Begin(std::uint64_t first)
    {
        Clear();
        m_first = first;
        m_behind = first;
        m_isOpen = true;
    }
    // No head of a file and no metadata begins in the sector, whatever the carver's state. isShown: but it means something to
    // others than the carver.
    void Add(std::uint64_t lba, bool isShown)
    {
        m_isOpen = m_isOpen && lba == m_behind && (!isShown || m_shown.size() < MostShown);
        if (!m_isOpen) {
            return;
        }
        if (isShown) {
            m_shown.push_back(lba);
        }
        ++m_behind;
    }

    // How many sectors from lba on need not be shown to anybody.
    std::uint64_t CountFrom(std::uint64_t lba) const
    {
        if (lba < m_first || lba >= m_behind) {
            return 0;
        }
        const auto next = std::lower_bound(m_shown.begin(), m_shown.end(), lba);
        return (next != m_shown.end() ? *next : m_behind) - lba;
    }

private:
    // Of a disk full of such sectors the rest is looked at again.
    static constexpr std::size_t MostShown = 4096;

    std::uint64_t m_first = 0;
    std::uint64_t m_behind = 0;
    bool m_isOpen = false;
    std::vector<std::uint64_t> m_shown;  // ascending
};
