// The tools of the tests are checked where a fault in them would make other tests pass for nothing.
#include "storage/ByteReader.h"
#include "tests/support/Bytes.h"
#include "tests/support/FailingReader.h"
#include "tests/support/FatCard.h"
#include "tests/support/Pictures.h"
#include "tests/support/RunCommand.h"

#include <gtest/gtest.h>

#include <csignal>

TEST(BytesText, HexQuotesAndRepeats)
{
    EXPECT_EQ(Bytes("89 'P N' 0D 00*3"), (ByteVector{0x89, 'P', ' ', 'N', 0x0D, 0, 0, 0}));
    for (const char* wrong : {"8", "xyz", "'open", "00*", "123"}) {
        EXPECT_ANY_THROW((void)Bytes(wrong)) << wrong;
    }
}

TEST(Pictures, OpenInAnIndependentDecoder)
{
    if (const std::string missing = MissingTool({"ffmpeg"}); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const TempFolder folder;
    WriteFileBytes(folder / "a.jpg", MakeJpeg(64, 40, 1));
    WriteFileBytes(folder / "b.png", MakePng(301, 250, 2));  // more than one stored block
    WriteFileBytes(folder / "c.bmp", MakeBmp(32, 17, 3));
    const std::vector<std::pair<std::string, std::size_t>> grey = {
        {"a.jpg", 64 * 40}, {"b.png", 301 * 250}, {"c.bmp", 32 * 17}};
    for (const auto& [name, pixels] : grey) {
        const std::string raw =
            MustRun({"ffmpeg", "-v", "error", "-xerror", "-i", (folder / name).string(), "-f",
                     "rawvideo", "-pix_fmt", "gray", "-"});
        EXPECT_EQ(raw.size(), pixels) << name;
    }
    const std::string png = MustRun({"ffmpeg", "-v", "error", "-i", (folder / "b.png").string(),
                                     "-f", "rawvideo", "-pix_fmt", "gray", "-"});
    EXPECT_EQ(ByteVector(png.begin(), png.end()), RandomBytes(301 * 250, 2));
}

TEST(FatCardFixture, HoldsWhatWasPutAndForgetsWhatWasDeleted)
{
    if (const std::string missing = FatCard::MissingTools(); !missing.empty()) {
        GTEST_SKIP() << missing;
    }
    const TempFolder folder;
    for (const int bits : {12, 16, 32}) {
        FatOptions options;
        options.fatBits = bits;
        options.volumeBytes = bits == 12 ? 1u << 20 : bits == 16 ? 16u << 20 : 40u << 20;
        options.startByte = 1u << 20;
        options.tailBytes = 4096;
        const FatCard volume(folder / ("fat" + std::to_string(bits)), options);
        const ByteVector content = RandomBytes(5000, static_cast<std::uint64_t>(bits));
        volume.MakeFolder("A folder");
        volume.Put("A folder/long name.bin", content);
        EXPECT_EQ(volume.Get("A folder/long name.bin"), content);
        volume.Delete("A folder/long name.bin");
        EXPECT_ANY_THROW((void)volume.Get("A folder/long name.bin"));
        const ImageFile image(volume.ImagePath());
        EXPECT_EQ(image.Read(options.startByte + 510, 2), Bytes("55 AA"));
        EXPECT_EQ(image.SizeBytes(), options.startByte + options.volumeBytes + options.tailBytes);
    }
}

TEST(FailingReaderFixture, FailsOnlyInItsRangeAndGivesWhatLiesBefore)
{
    const TempFolder folder;
    const ImageFile image(folder / "image", 4096);
    FailingReader reader;
    reader.FailSector(2);
    OpenedSource source;
    ASSERT_EQ(OpenImageSource(image.Path(), source), ResultSuccess);
    ByteVector buffer(4096);
    std::size_t got = 0;
    EXPECT_EQ(source.reader->ReadAt(0, buffer.data(), 1024, &got), ResultSuccess);
    EXPECT_EQ(source.reader->ReadAt(1535, buffer.data(), 1, &got), ResultReadFault);
    EXPECT_EQ(source.reader->ReadAt(1536, buffer.data(), 8, &got), ResultSuccess);
    EXPECT_EQ(source.reader->ReadAt(0, buffer.data(), 4096, &got), ResultReadFault);
    EXPECT_EQ(got, 1024u);
    EXPECT_EQ(reader.ReadCount(), 4u);
    EXPECT_EQ(reader.LargestRead(), 4096u);
}

TEST(RunCommandFixture, TellsOutputsStatusAndSignals)
{
    const CommandResult result =
        RunCommand({"sh", "-c", "echo $WORD; echo bad >&2; exit 7"}, {"WORD=good"});
    EXPECT_EQ(result.out, "good\n");
    EXPECT_EQ(result.err, "bad\n");
    EXPECT_EQ(result.exitStatus, 7);
    EXPECT_EQ(RunCommand({"/no/such/program"}).exitStatus, 127);
    ChildProcess sleeper({"sleep", "60"});
    sleeper.Signal(SIGTERM);
    EXPECT_EQ(sleeper.Wait().exitStatus, 128 + SIGTERM);
}
