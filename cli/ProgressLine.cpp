#include "cli/ProgressLine.h"

#include "cli/TextForms.h"
#include "platform/FileTime.h"

#include <ostream>

namespace {

constexpr std::uint64_t MillisecondsBetween = 100;
constexpr std::string_view ClearLine = "\r\x1b[K";

}  // namespace

bool ProgressLine::IsDue()
{
    if (!m_enabled) {
        return false;
    }
    const std::uint64_t now = TickMilliseconds();
    if (now < m_nextTick) {
        return false;
    }
    m_nextTick = now + MillisecondsBetween;
    return true;
}

void ProgressLine::Show(std::string_view text)
{
    if (m_enabled) {
        m_stream << ClearLine << text << std::flush;
        m_shown = true;
    }
}

void ProgressLine::Clear()
{
    if (m_shown) {
        m_stream << ClearLine << std::flush;
        m_shown = false;
    }
}

namespace {

std::string LeftText(std::int32_t seconds)
{
    return seconds >= 0 ? ", " + DurationText(seconds) + " left" : std::string();
}

std::string SectorsText(const Progress& progress)
{
    return ", " + std::to_string(progress.done) + " of " + std::to_string(progress.total) +
           " sectors";
}

}  // namespace

std::string ScanText(const Progress& progress)
{
    // The quick engines' own estimate is of their part alone.
    return "Scanning: " + std::to_string(progress.percent) + "%" +
           LeftText(progress.range >= 90 ? progress.secondsLeft : -1) +
           (progress.total != 0 ? SectorsText(progress) : std::string()) + ", " +
           std::to_string(progress.found) + " found";
}

std::string CopyText(const Progress& progress)
{
    return "Copying: " + std::to_string(progress.percent) + "%" + LeftText(progress.secondsLeft) +
           SectorsText(progress);
}
