// The line on standard error that rewrites itself while a command works.
#pragma once

#include "session/Progress.h"

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

// "Scanning: 42%, 3:10 left, 1234 of 5678 sectors, 17 found": what is known of it.
std::string ScanText(const Progress& progress);
// "Copying: 42%, 3:10 left, 1234 of 5678 sectors".
std::string CopyText(const Progress& progress);
