#include "recovery/carving/ByteSearch.h"

#include <algorithm>

namespace {

constexpr std::size_t Stride = 64;

// Whether the pair begins at one of Stride positions; reads one byte more. Written so that it becomes vector code.
bool HoldsPair(const std::uint8_t* at, std::uint8_t first, std::uint8_t second)
{
    std::uint8_t any = 0;
    for (std::size_t i = 0; i < Stride; ++i) {
        const auto left = static_cast<std::uint8_t>(at[i] ^ first);
        const auto right = static_cast<std::uint8_t>(at[i + 1] ^ second);
        any = static_cast<std::uint8_t>(any | ((left | right) == 0 ? 1 : 0));
    }
    return any != 0;
}

// The two neighbouring bytes of the pattern to look for first: without zeros where it can be, as disks are full of
// those. Marks end in their rarest bytes more often than they begin with them.
std::size_t RarestPair(std::string_view pattern)
{
    std::size_t best = 0;
    int bestScore = -1;
    for (std::size_t i = 0; i + 1 < pattern.size(); ++i) {
        const int score = (pattern[i] != 0 ? 1 : 0) + (pattern[i + 1] != 0 ? 1 : 0);
        if (score >= bestScore) {
            best = i;
            bestScore = score;
        }
    }
    return best;
}

// The same bytes at every position from..last.
std::size_t
FindOneByOne(ByteView block, std::string_view pattern, std::size_t from, std::size_t last)
{
    for (std::size_t i = from; i <= last; ++i) {
        if (block.Data()[i] == static_cast<std::uint8_t>(pattern[0]) && block.Matches(i, pattern)) {
            return i;
        }
    }
    return NotFound;
}

}  // namespace

std::size_t FindBytes(ByteView block, std::string_view pattern, std::size_t from)
{
    if (pattern.empty() || !block.Covers(from, pattern.size())) {
        return NotFound;
    }
    const std::size_t last = block.Size() - pattern.size();
    if (pattern.size() == 1) {
        return FindOneByOne(block, pattern, from, last);
    }
    const std::size_t pairAt = RarestPair(pattern);
    const auto first = static_cast<std::uint8_t>(pattern[pairAt]);
    const auto second = static_cast<std::uint8_t>(pattern[pairAt + 1]);
    std::size_t at = from;
    // Positions at to at + Stride - 1, whose pairs end at at + pairAt + Stride at the latest.
    for (; block.Covers(at, pairAt + Stride + 1) && at + Stride - 1 <= last; at += Stride) {
        if (!HoldsPair(block.Data() + at + pairAt, first, second)) {
            continue;
        }
        const std::size_t hit = FindOneByOne(block, pattern, at, at + Stride - 1);
        if (hit != NotFound) {
            return hit;
        }
    }
    return FindOneByOne(block, pattern, at, last);
}

bool EndsFile(ByteView block, std::size_t end, std::int32_t sectorSize)
{
    const std::size_t inSector = end % static_cast<std::size_t>(sectorSize);
    if (inSector == 0) {
        return true;
    }
    const std::size_t rest = static_cast<std::size_t>(sectorSize) - inSector;
    return block.Covers(end, rest) && block.Sub(end, rest).AllZero();
}

std::size_t MarkFinder::Search(const SearchBlock& block, std::size_t from) const
{
    std::size_t at = FindBytes(block.bytes, m_mark, from);
    if (m_accept == Accept::Any) {
        return at;
    }
    while (at != NotFound && !EndsFile(block.bytes, at + m_mark.size(), block.sectorSize)) {
        at = FindBytes(block.bytes, m_mark, at + 1);
    }
    return at;
}

std::size_t MarkFinder::Find(const SearchBlock& block, std::size_t from)
{
    if (block.contents == 0) {
        return Search(block, from);
    }
    if (!block.bytes.Covers(from, m_mark.size())) {
        return NotFound;
    }
    const std::uint64_t start = block.startByte + from;
    // One past the last place where the mark could begin.
    const std::uint64_t end = block.startByte + block.bytes.Size() - m_mark.size() + 1;
    const bool known = m_contents == block.contents && m_sectorSize == block.sectorSize &&
                       start >= m_searchedFrom && start <= m_searchedTo &&
                       (m_found == Nowhere || m_found >= start);
    if (!known) {
        m_contents = block.contents;
        m_sectorSize = block.sectorSize;
        m_searchedFrom = start;
        m_searchedTo = start;
        m_found = Nowhere;
    }
    if (m_found == Nowhere && m_searchedTo < end) {
        const std::size_t hit =
            Search(block, static_cast<std::size_t>(m_searchedTo - block.startByte));
        m_found = hit == NotFound ? Nowhere : block.startByte + hit;
        m_searchedTo = hit == NotFound ? end : m_found + 1;
    }
    return m_found != Nowhere && m_found < end ? static_cast<std::size_t>(m_found - block.startByte)
                                               : NotFound;
}
