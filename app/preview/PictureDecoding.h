// Pictures for the windows, from the decoder that the whole program shares.
#pragma once

#include "app/decoding/PictureDecoder.h"

#include <QImage>

// Null when there is no picture. Any thread; takes as long as the decoder does.
QImage DecodePicture(const std::filesystem::path& file);
QImage DecodeThumbnail(std::span<const std::uint8_t> bytes);
