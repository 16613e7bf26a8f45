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

std::string ProgressText(const ScanProgress& progress)
{
    std::string text = "Scanning: " + std::to_string(progress.percent) + "%";
    if (progress.secondsLeft >= 0) {
        text += ", " + DurationText(progress.secondsLeft) + " left";
    }
    if (progress.totalSectors != 0) {
        text += ", " + std::to_string(progress.doneSectors) + " of " +
                std::to_string(progress.totalSectors) + " sectors";
    }
    return text + ", " + std::to_string(progress.found) + " found";
}
