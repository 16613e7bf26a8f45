// Sounds and clips, played by another program.
#pragma once

#include <filesystem>

void PlayVideo(const std::filesystem::path& file);
void PlayAudio(const std::filesystem::path& file);
void KillPlayers();
