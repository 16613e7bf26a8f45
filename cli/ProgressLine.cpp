#include "cli/ProgressLine.h"

#include "cli/TextForms.h"
#include "platform/FileTime.h"

#include <algorithm>
#include <array>
#include <ostream>

namespace {

constexpr std::uint64_t MillisecondsBetween = 100;
constexpr std::string_view ClearLine = "\r\x1b[K";
constexpr std::size_t UsualColumns = 80;  // of a terminal that does not tell

}  // namespace

ProgressLine::ProgressLine(const CommandStreams& streams, bool isQuiet)
    : m_stream(streams.err),
      m_columns(streams.columns),
      m_enabled(streams.errIsTerminal && !isQuiet)
{
}

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

std::size_t ProgressLine::Columns() const
{
    const std::size_t columns = m_columns != nullptr ? m_columns() : 0;
    return (columns != 0 ? columns : UsualColumns) - 1;  // the cursor takes one
}

void ProgressLine::Show(std::string_view text)
{
    if (m_enabled) {
        m_stream << ClearLine << CutToColumns(text, Columns()) << std::flush;
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

Pace::Pace() : m_startTick(TickMilliseconds()), m_sampleTick(m_startTick) {}

void Pace::Take(std::uint64_t bytes)
{
    constexpr std::uint64_t SampleMilliseconds = 2000;
    const std::uint64_t now = TickMilliseconds();
    if (bytes < m_lastBytes || m_lastBytes == 0) {
        m_sampleTick = now;
        m_sampleBytes = bytes;
    }
    m_lastBytes = bytes;
    const std::uint64_t passed = now - m_sampleTick;
    const bool isFirst = m_bytesPerSecond == 0 && passed >= SampleMilliseconds / 4;
    if (!isFirst && passed < SampleMilliseconds) {
        return;
    }
    m_bytesPerSecond = static_cast<std::uint64_t>(static_cast<double>(bytes - m_sampleBytes) *
                                                  1000 / static_cast<double>(passed));
    if (passed >= SampleMilliseconds) {
        m_sampleTick = now;
        m_sampleBytes = bytes;
    }
}

std::int32_t Pace::ElapsedSeconds() const
{
    return static_cast<std::int32_t>((TickMilliseconds() - m_startTick) / 1000);
}

namespace {

std::string BarText(std::int32_t percent, std::size_t columns)
{
    const std::size_t inner = columns - 2;
    const std::size_t full = inner * static_cast<std::size_t>(std::clamp(percent, 0, 100)) / 100;
    return "[" + std::string(full, '#') + std::string(inner - full, '.') + "]";
}

enum Piece : std::size_t
{
    Bytes,
    Speed,
    Elapsed,
    Left,
    Count,
    Place,
    PieceCount
};

std::array<std::string, PieceCount> PiecesOf(const ProgressFigures& figures)
{
    std::array<std::string, PieceCount> pieces;
    if (figures.totalBytes != 0) {
        pieces[Bytes] = SizeText(figures.doneBytes) + " of " + SizeText(figures.totalBytes);
    }
    if (figures.bytesPerSecond != 0) {
        pieces[Speed] = SizeText(figures.bytesPerSecond) + "/s";
    }
    pieces[Elapsed] = DurationText(figures.elapsedSeconds) + " elapsed";
    if (figures.leftSeconds >= 0) {
        pieces[Left] = DurationText(figures.leftSeconds) + " left";
    }
    pieces[Count] = figures.count;
    pieces[Place] = figures.place;
    return pieces;
}

}  // namespace

std::string ProgressText(const ProgressFigures& figures, std::size_t columns)
{
    constexpr std::size_t SmallestBar = 10;
    constexpr std::size_t LargestBar = 42;
    constexpr std::array<Piece, PieceCount> MostWantedFirst = {Left,  Count, Bytes,
                                                               Speed, Place, Elapsed};
    const std::string percent = std::to_string(figures.percent);
    std::string text = std::string(figures.task) + ' ' +
                       std::string(percent.size() < 3 ? 3 - percent.size() : 0, ' ') + percent +
                       '%';
    std::size_t used = ColumnsOf(text) + 1 + SmallestBar;
    if (used > columns) {
        return text;
    }
    const std::array<std::string, PieceCount> pieces = PiecesOf(figures);
    std::array<bool, PieceCount> isShown = {};
    for (const Piece piece : MostWantedFirst) {
        const bool isFirst = std::count(isShown.begin(), isShown.end(), true) == 0;
        const std::size_t needed = ColumnsOf(pieces[piece]) + (isFirst ? 1 : 2);  // " " or ", "
        isShown[piece] = !pieces[piece].empty() && used + needed <= columns;
        used += isShown[piece] ? needed : 0;
    }
    text += ' ' + BarText(figures.percent, std::min(SmallestBar + columns - used, LargestBar));
    std::string_view between = " ";
    for (std::size_t piece = 0; piece < PieceCount; ++piece) {
        if (isShown[piece]) {
            text += between;
            text += pieces[piece];
            between = ", ";
        }
    }
    return text;
}

ProgressFigures
FiguresOf(std::string_view task, const Progress& progress, std::uint32_t sectorSize, Pace& pace)
{
    ProgressFigures figures;
    figures.task = task;
    figures.percent = progress.percent;
    figures.doneBytes = progress.done * sectorSize;
    figures.totalBytes = progress.total * sectorSize;
    pace.Take(figures.doneBytes);
    figures.bytesPerSecond = pace.BytesPerSecond();
    figures.elapsedSeconds = pace.ElapsedSeconds();
    // The quick engines' own estimate is of their part alone.
    figures.leftSeconds = progress.range >= 90 ? progress.secondsLeft : -1;
    if (progress.range >= 90 && figures.leftSeconds < 0 && progress.total > progress.done &&
        figures.bytesPerSecond != 0) {
        figures.leftSeconds = static_cast<std::int32_t>(std::min<std::uint64_t>(
            (figures.totalBytes - figures.doneBytes) / figures.bytesPerSecond, INT32_MAX));
    }
    return figures;
}
