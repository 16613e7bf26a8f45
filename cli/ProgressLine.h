// The line on standard error that rewrites itself while a command works.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

class ProgressLine
{
public:
    // Writes nothing when not enabled: no terminal, or --quiet.
    ProgressLine(std::ostream& stream, bool enabled) : m_stream(stream), m_enabled(enabled) {}
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { Clear(); }

    // True when enough time has passed for the next text; making the text can be left out otherwise.
    bool IsDue();
    void Show(std::string_view text);
    void Clear();

private:
    std::ostream& m_stream;
    bool m_enabled;
    bool m_shown = false;
    std::uint64_t m_nextTick = 0;
};

// "42%, 3:10 left, 1234 of 5678 sectors, 17 files": what is known of it.
struct ScanProgress
{
    std::int32_t percent = 0;
    std::int32_t secondsLeft = -1;  // negative when not known
    std::uint64_t doneSectors = 0;
    std::uint64_t totalSectors = 0;  // 0 when not known
    std::uint64_t found = 0;
};
std::string ProgressText(const ScanProgress& progress);
