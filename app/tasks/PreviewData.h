// What fetching a file for a preview brings.
#pragma once

#include "recovery/FoundRow.h"

#include <cstdint>
#include <filesystem>
#include <vector>

struct PreviewData
{
    static constexpr std::uint32_t Capacity = 20 * 1024 * 1024;

    FoundRow row;
    std::filesystem::path
        tempPath;  // of a picture, sound or clip; empty when the bytes came instead
    std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(Capacity);
    std::uint32_t dataSize = Capacity;  // bytes of the buffer that came
    bool isPlayable = false;            // by the players
    bool isAudio = false;
};
