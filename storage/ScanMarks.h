// Where a scan has read, where it could not, and where it found files: a few thousand equal parts of what it scans, each with
// a mark or none, for a picture of it.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

// Any thread may call it. A mark that is there already costs a look.
class ScanMarks
{
public:
    // Of the whole drive or file, in bytes.
    ScanMarks(std::uint64_t startByte, std::uint64_t byteCount);

    void NoteRead(std::uint64_t position, std::uint64_t count) { Note(m_read, position, count); }
    void NoteUnread(std::uint64_t position, std::uint64_t count)
    {
        Note(m_unread, position, count);
    }
    void NoteFound(std::uint64_t position) { Note(m_found, position, 1); }

    // The whole as so many letters: ? not read, 1 to 8 in part, + read, F with files; - could not be read, ! nor all around
    // files.
    std::string Letters(std::size_t cells) const;

private:
    static constexpr std::size_t Parts = 8192;
    using Bits = std::array<std::atomic<std::uint64_t>, Parts / 64>;

    static bool Has(const Bits& bits, std::size_t part)
    {
        return (bits[part / 64].load(std::memory_order_relaxed) >> part % 64 & 1) != 0;
    }
    void Note(Bits& bits, std::uint64_t position, std::uint64_t count);
    char LetterOf(std::size_t first, std::size_t behind) const;

    std::uint64_t m_start = 0;
    std::uint64_t m_end = 0;
    unsigned m_shift = 0;  // of a byte's place to its part
    std::size_t m_parts = 0;
    Bits m_read = {};
    Bits m_unread = {};
    Bits m_found = {};
};
