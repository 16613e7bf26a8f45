// Watches a player that has just been started until it is sure that it plays.
#pragma once

#include "platform/Process.h"

#include <cstdint>
#include <vector>

enum class PlayerStart
{
    Plays,
    Failed,  // it ended, or closed its output, before it showed its progress
    Killed   // somebody ended it before
};

// The player writes "%" in its progress lines and nowhere else. Reads all that comes until the first one, which closes the pipe:
// what it writes then is its own affair. Takes as long as the player takes to begin or to end.
class PlayerPipe
{
public:
    PlayerPipe();

    PlayerStart Watch(LaunchedProgram& player);

private:
    bool ReadsProgress(const LaunchedProgram& player, std::size_t bytes, bool& outBroken);

    std::vector<std::uint8_t> m_buffer;
};
