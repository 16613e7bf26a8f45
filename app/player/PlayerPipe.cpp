#include "app/player/PlayerPipe.h"

#include <algorithm>

namespace {

constexpr std::size_t BufferBytes = 0xA00000;
constexpr std::size_t PieceBytes = 65536;
constexpr int WaitMilliseconds = 5;
constexpr int LooksAfterItsEnd = 100;

}  // namespace

PlayerPipe::PlayerPipe()
{
    m_buffer.reserve(BufferBytes);
}

// Text ends at a zero byte; what follows one is no progress line.
bool PlayerPipe::ReadsProgress(const LaunchedProgram& player, std::size_t bytes, bool& outBroken)
{
    m_buffer.clear();
    while (m_buffer.size() < bytes) {
        const std::vector<std::uint8_t> piece =
            player.ReadOutput(std::min(PieceBytes, bytes - m_buffer.size()));
        if (piece.empty()) {
            outBroken = true;
            return false;
        }
        m_buffer.insert(m_buffer.end(), piece.begin(), piece.end());
    }
    const auto end = std::find(m_buffer.begin(), m_buffer.end(), 0);
    return std::find(m_buffer.begin(), end, '%') != end;
}

PlayerStart PlayerPipe::Watch(LaunchedProgram& player)
{
    // What it wrote before its end may still lie in the pipe.
    int looks = LooksAfterItsEnd;
    for (bool broken = false; !broken;) {
        if (player.HasEnded(WaitMilliseconds) && --looks < 0) {
            break;
        }
        const std::optional<std::size_t> available = player.AvailableOutput();
        if (!available) {
            break;
        }
        if (*available != 0 && ReadsProgress(player, *available, broken)) {
            player.CloseOutput();
            return PlayerStart::Plays;
        }
    }
    constexpr int EndMilliseconds = 200;  // it may close its output a moment before it ends
    return player.HasEnded(EndMilliseconds) && player.WasKilled() ? PlayerStart::Killed
                                                                  : PlayerStart::Failed;
}
