// Small real pictures that any viewer opens, made without a tool. Equal arguments give equal bytes, other seeds
// other pictures.
#pragma once

#include "tests/support/TempFolder.h"

#include <cstdint>

// Greyscale, baseline, JFIF; a side is a multiple of 8. About 1.2 bytes for each 8 x 8 block.
ByteVector MakeJpeg(std::uint32_t width, std::uint32_t height, std::uint64_t seed);
// 8-bit greyscale, stored without compression: a little more than a byte a pixel.
ByteVector MakePng(std::uint32_t width, std::uint32_t height, std::uint64_t seed);
// 24 bits a pixel; the width is a multiple of 4.
ByteVector MakeBmp(std::uint32_t width, std::uint32_t height, std::uint64_t seed);
