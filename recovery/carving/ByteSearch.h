// Searching blocks for marks: plain forward search, and a finder that remembers what it has searched already.
#pragma once

#include "platform/ByteView.h"

#include <cstdint>
#include <string_view>

inline constexpr std::size_t NotFound = SIZE_MAX;

// Offset of the first occurrence at or after from; NotFound also for an empty pattern.
std::size_t FindBytes(ByteView block, std::string_view pattern, std::size_t from = 0);

// Whether a mark that ends at the offset end closes its file: it ends a sector, or only zeros follow it in its
// sector.
bool EndsFile(ByteView block, std::size_t end, std::int32_t sectorSize);

// A piece of a source as a mark finder sees it.
struct SearchBlock
{
    ByteView bytes;
    std::uint64_t startByte = 0;  // where it lies on the source
    std::uint64_t contents =
        0;  // equal for blocks of one opened source; 0 when nothing may be remembered
    std::int32_t sectorSize = 512;  // for the end test
};

// Finds a mark in blocks that overlap. Heads in adjacent sectors are measured over nearly the same 64 KiB each;
// what was searched for the one is not searched again for the next. The answers are those of a plain search.
class MarkFinder
{
public:
    enum class Accept
    {
        Any,
        ClosingFile  // only occurrences that pass EndsFile
    };

    explicit MarkFinder(std::string_view text, Accept which = Accept::Any)
        : m_mark(text), m_accept(which)
    {
    }

    // Offset in the block of the first accepted occurrence at or after from, or NotFound.
    std::size_t Find(const SearchBlock& block, std::size_t from = 0);

private:
    static constexpr std::uint64_t Nowhere = UINT64_MAX;

    std::size_t Search(const SearchBlock& block, std::size_t from) const;

    std::string_view m_mark;
    Accept m_accept;
    // Between searchedFrom and searchedTo begins no occurrence but the one at found, which is the first.
    std::uint64_t m_contents = 0;
    std::int32_t m_sectorSize = 0;
    std::uint64_t m_searchedFrom = 0;
    std::uint64_t m_searchedTo = 0;
    std::uint64_t m_found = Nowhere;
};
