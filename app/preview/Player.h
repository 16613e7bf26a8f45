// Sounds and clips in the preview: what the windows do with the players beside starting them.
#pragma once

#include <filesystem>

// Starts it, and gives it a second to come up. A message follows when the clip cannot be played.
void PlayVideo(const std::filesystem::path& file);
void PlayAudio(const std::filesystem::path& file);
