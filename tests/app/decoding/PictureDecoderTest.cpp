// What a decoder does that a picture has broken, and what becomes of those that ask it. What the real one makes of pictures is
// tested with the preview.
#include "app/decoding/PictureDecoder.h"

#include "decoder/PictureReading.h"
#include "platform/SharedMemory.h"
#include "tests/support/Bytes.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

namespace {

TEST(PictureDecoderTest, ADecoderThatAPictureBreaksGivesNoPictureAndTheNextOneIsDecoded)
{
    PictureDecoder decoder(LUMIVAULT_STAND_IN);
    // It crashes, ends, hangs, eats memory, answers a picture larger than all, or less than none, or in another tongue.
    for (const char* const how : {"C", "E", "H", "M", "L", "N", "O"}) {
        EXPECT_TRUE(
            decoder.Decode(Bytes(std::string("'") + how + "'"), PictureUse::Preview).IsNull())
            << how;
        const DecodedPicture next = decoder.Decode(Bytes("'a good one'"), PictureUse::Preview);
        EXPECT_EQ(std::pair(next.width, next.height), std::pair(5, 4)) << how;
        EXPECT_EQ(next.pixels.size(), 20U) << how;
    }
}

TEST(PictureDecoderTest, InsideItsConfinementNothingCanBeOpenedStartedOrReached)
{
    PictureDecoder decoder(LUMIVAULT_STAND_IN);
    const DecodedPicture errors = decoder.Decode(Bytes("'T'"), PictureUse::Preview);
    EXPECT_EQ(errors.pixels, std::vector<std::uint32_t>(10, EPERM));
}

TEST(PictureDecoderTest, WithoutTheProgramThereIsNoPicture)
{
    for (const char* const path : {"/nowhere/lumivault-decoder", "/bin/true"}) {
        PictureDecoder decoder(path);
        EXPECT_TRUE(decoder.Decode(MakeJpeg(16, 16, 1), PictureUse::Preview).IsNull()) << path;
    }
}

TEST(PictureReadingTest, WhatTakesTooLongIsGivenUp)
{
    const ByteVector bytes = MakeJpeg(64, 64, 1);
    FileHandle file;
    ASSERT_EQ(ShareBytes(bytes, file), ResultSuccess);
    PictureLimits limits;
    EXPECT_FALSE(ReadPicture(file, {bytes.size(), 32, false}, limits).isNull());
    limits.longest = std::chrono::milliseconds(-1);
    EXPECT_TRUE(ReadPicture(file, {bytes.size(), 32, false}, limits).isNull());
}

TEST(PictureDecoderTest, TheRealOneServesSeveralThreads)
{
    PictureDecoder decoder;
    std::vector<std::thread> threads;
    std::vector<int> widths(4);
    for (std::size_t i = 0; i < widths.size(); ++i) {
        threads.emplace_back([&, i] {
            const auto side = static_cast<std::uint32_t>(16 * (i + 1));
            widths[i] = decoder.Decode(MakeJpeg(side, 16, i), PictureUse::Thumbnail).width;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(decoder.Decode(std::filesystem::path("/tmp"), PictureUse::Preview).IsNull());
    EXPECT_EQ(widths, (std::vector<int>{16, 32, 48, 64}));
    EXPECT_EQ(decoder.Decode(MakeJpeg(640, 320, 1), PictureUse::Thumbnail).height,
              ThumbnailSide / 2);
}

}  // namespace
