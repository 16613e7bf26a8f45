#include "app/preview/Player.h"

void PlayVideo(const std::filesystem::path&) {}
void PlayAudio(const std::filesystem::path&) {}
void KillPlayers() {}
