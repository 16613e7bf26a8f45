// Pictures that come from a damaged disk, or from somebody who means harm: what is decoded of them, and how much.
#pragma once

#include "platform/FileHandle.h"

#include <QImage>

#include <chrono>
#include <cstdint>

// How far decoding goes before it is given up.
struct PictureLimits
{
    int mostMegabytes = 256;                // that one picture may take while it is decoded
    std::int64_t mostPixels = 300'000'000;  // of a JPEG, which is scaled while it is read
    std::int64_t mostPixelsOfProgressive =
        50'000'000;  // these are held whole, in six bytes a pixel
    // A little less than the asker waits: who gives up in time is not started again.
    std::chrono::milliseconds longest{1800};
};

struct PictureWish
{
    std::uint64_t sizeBytes = 0;  // of the file
    int mostSide = 0;             // of what comes out; larger ones are scaled down
    bool isRough = false;         // rather soon than well
};

// Looks at what the file holds, whatever its name says. Turned as the camera was held; 32 bits a pixel, premultiplied. Null
// when it is no picture, or one that is too small to be seen, or takes more than the limits.
QImage
ReadPicture(const FileHandle& file, const PictureWish& wish, const PictureLimits& limits = {});
