// What a rescue knows of each byte of its source, and the map file that it is kept in between two runs: the format that GNU
// ddrescue reads and writes too, so that either can go on with what the other has begun.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// The letters of the file.
enum class RescueStatus : char
{
    NonTried = '?',
    NonTrimmed = '*',  // in a piece whose reading failed
    NonScraped = '/',  // between two bad sectors
    Bad = '-',
    Finished = '+'
};

struct RescueBlock
{
    std::uint64_t begin = 0;  // bytes
    std::uint64_t end = 0;
    RescueStatus status = RescueStatus::NonTried;

    std::uint64_t Size() const { return end - begin; }
};

// What is being done, with the letters of the file again.
enum class RescuePhase : char
{
    Copying = '?',
    Trimming = '*',
    Scraping = '/',
    Retrying = '-',
    Finished = '+'
};

// Not thread-safe. Positions are those in the image.
class RescueMap
{
public:
    // Nothing is tried yet.
    explicit RescueMap(std::uint64_t totalBytes = 0);

    // What the text of a map file says, nothing when it is none: every number is looked at, blocks have to follow one another.
    static std::optional<RescueMap> Parse(std::string_view text);
    std::string Text() const;

    std::uint64_t TotalBytes() const { return m_total; }
    // More is there than was known of: it is not tried yet.
    void GrowTo(std::uint64_t totalBytes);
    // A sector of which a part is not read is not read.
    void AlignTo(std::uint32_t sectorSize);
    // Of what lies past the total nothing is kept.
    void Set(std::uint64_t begin, std::uint64_t end, RescueStatus status);

    // The first stretch of that status that ends after the position, cut there; the last one that begins before it.
    std::optional<RescueBlock> FindForward(RescueStatus status, std::uint64_t from) const;
    std::optional<RescueBlock> FindBackward(RescueStatus status, std::uint64_t until) const;
    std::uint64_t BytesOf(RescueStatus status) const;
    // Stretches of what cannot be read.
    std::size_t BadPlaces() const;
    // The whole as so many letters, each the worst of its part.
    std::string Strip(std::size_t cells) const;

    RescuePhase phase = RescuePhase::Copying;
    std::uint32_t pass = 1;
    std::uint64_t position = 0;  // where it is at work

private:
    using Starts = std::map<std::uint64_t, RescueStatus>;

    void SplitAt(std::uint64_t position);
    std::uint64_t EndOf(Starts::const_iterator block) const;

    Starts m_starts;  // each block up to the next one's start; neighbours differ
    std::map<RescueStatus, std::uint64_t> m_bytes;
    std::uint64_t m_total = 0;
};
