// What lumivault and lumivault-decoder tell each other, a message each, over the decoder's standard input. The decoder tells once
// that it is ready; from then on each request gets one answer.
//
// A request comes with two descriptors: the picture, and memory for the pixels, which the asker has made as long as the
// largest answer takes. So nothing that the decoder makes is ever mapped, and a size that it claims is held against the
// asker's own figure.
#pragma once

#include <cstdint>

inline constexpr std::uint32_t DecoderMark =
    0x3144564C;  // other programs, and other versions, have others

inline constexpr std::int32_t MostPictureSide = 2048;
inline constexpr std::int32_t BytesAPixel =
    4;  // premultiplied, in the order of the processor: 0xAARRGGBB

struct DecoderRequest
{
    std::uint32_t mark = DecoderMark;
    std::uint32_t number = 0;        // of the request; the answer repeats it
    std::uint64_t pictureBytes = 0;  // how long the picture is
    std::int32_t mostSide = 0;       // larger ones are scaled down to it
    std::uint32_t isRough = 0;       // 1: rather soon than well, for a small picture
};
static_assert(sizeof(DecoderRequest) == 24);

struct DecoderAnswer
{
    std::uint32_t mark = DecoderMark;
    std::uint32_t number = 0;  // 0: it is ready
    std::int32_t width = 0;    // 0: no picture
    std::int32_t height = 0;
};
static_assert(sizeof(DecoderAnswer) == 16);
