// The line on standard error that rewrites itself while a command works.
#pragma once

#include "cli/Command.h"
#include "session/Progress.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

class ProgressLine
{
public:
    // Writes nothing when standard error is no terminal, or with isQuiet.
    ProgressLine(const CommandStreams& streams, bool isQuiet);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { Clear(); }

    // True when enough time has passed for the next text; making the text can be left out otherwise.
    bool IsDue();
    // That the window has room for, as wide as it is now: a line that wraps could not be rewritten.
    std::size_t Columns() const;
    // Cut where it is longer.
    void Show(std::string_view text);
    void Clear();

private:
    std::ostream& m_stream;
    std::size_t (*m_columns)();
    bool m_enabled;
    bool m_shown = false;
    std::uint64_t m_nextTick = 0;
};

// How fast a task is, and since when it runs. A new one begins with a new task.
class Pace
{
public:
    Pace();
    // Bytes that are done so far. What goes back begins anew: the next part of a task.
    void Take(std::uint64_t bytes);
    std::uint64_t BytesPerSecond() const { return m_bytesPerSecond; }
    std::int32_t ElapsedSeconds() const;

private:
    std::uint64_t m_startTick;
    std::uint64_t m_sampleTick;
    std::uint64_t m_sampleBytes = 0;
    std::uint64_t m_lastBytes = 0;
    std::uint64_t m_bytesPerSecond = 0;
};

// What a line of progress tells; what is not known is left out.
struct ProgressFigures
{
    std::string_view task;  // "Scanning"
    std::int32_t percent = 0;
    std::uint64_t doneBytes = 0;
    std::uint64_t totalBytes = 0;
    std::uint64_t bytesPerSecond = 0;
    std::int32_t elapsedSeconds = 0;
    std::int32_t leftSeconds = -1;
    std::string count;  // "17 found"
    std::string place;  // "part 2 of 3"
};

// "Scanning  42% [######........] 1.2 GB of 3.0 GB, 85.0 MB/s, 0:12 elapsed, 3:10 left, 17 found, part 2 of 3": as much of it
// as has room, the most wanted first.
std::string ProgressText(const ProgressFigures& figures, std::size_t columns);
// Of a task that reads sectors of that size.
ProgressFigures
FiguresOf(std::string_view task, const Progress& progress, std::uint32_t sectorSize, Pace& pace);
