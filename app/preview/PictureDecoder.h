// Pictures that come from a damaged disk, or from somebody who means harm: what is decoded of them, and how much.
#pragma once

#include <QImage>

#include <chrono>
#include <filesystem>

// How far decoding goes before it is given up.
struct PictureLimits
{
    int mostSide = 2048;                    // of what comes out; larger ones are scaled down
    int mostMegabytes = 256;                // that one picture may take while it is decoded
    std::int64_t mostPixels = 300'000'000;  // of a JPEG, which is scaled while it is read
    std::int64_t mostPixelsOfProgressive =
        50'000'000;  // these are held whole, in six bytes a pixel
    std::chrono::milliseconds longest{5000};
};

// Looks at what the file holds, whatever its name says. Turned as the camera was held. Null when it is no picture, or one that is
// too small to be seen, or takes more than the limits.
QImage DecodePicture(const std::filesystem::path& file, const PictureLimits& limits = {});
