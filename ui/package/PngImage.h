// Decodes the skin's pictures. Never used for pictures that were recovered.
#pragma once

#include "platform/ByteView.h"

#include <QImage>

// More pixels than any part of a window has; what claims more is refused before memory is taken.
inline constexpr int MaxPngSide = 16384;
inline constexpr std::int64_t MaxPngPixels = std::int64_t{8} << 20;

// Premultiplied, ready for painting. A null image when the bytes are no whole PNG or it is too large.
QImage DecodePng(ByteView bytes);
