// The two players: one shows a clip and is watched until it plays, the other plays a sound. Both outlive what started them, until
// they are killed.
#pragma once

#include "app/player/PlayerPipe.h"

#include <filesystem>
#include <functional>

// Where the players stand.
std::filesystem::path PlayerFolder();
// More arguments for both from now on: a test has neither screen nor loudspeaker.
void AddPlayerArguments(std::vector<std::string> arguments);

// Starts the player on a thread of its own, which calls onFailed when the file cannot be played; not when the player was
// killed, nor when there is none.
void StartVideo(const std::filesystem::path& path, std::function<void()> onFailed);
// Nothing tells whether it plays.
void StartAudio(const std::filesystem::path& path);
// Those of this user, also of a run that has crashed. Players of other names are left alone.
void KillPlayers();
// Until no thread of StartVideo() runs any more; soon once the players are killed.
void WaitForPlayerThreads();
