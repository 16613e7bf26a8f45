// Lengths and boundaries: crafted images, each with the one oddity that it is about.
#include "recovery/carving/ByteSearch.h"
#include "recovery/carving/CarveContext.h"
#include "tests/recovery/carving/CarveSupport.h"
#include "tests/support/FailingReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

constexpr std::uint64_t BlockSectors = 128;

ByteVector Jpeg()
{
    return Bytes("FF D8 FF E0 00 10 'JFIF' 00 01 55*20");
}
ByteVector Noise(std::size_t sectors)
{
    return ByteVector(sectors * 512, 0x55);
}
// bytes at an offset of a run of noise.
ByteVector NoiseWith(std::size_t sectors, std::size_t offset, const ByteVector& bytes)
{
    ByteVector noise = Noise(sectors);
    std::copy(bytes.begin(), bytes.end(), noise.begin() + static_cast<std::ptrdiff_t>(offset));
    return noise;
}

ByteVector Packets(std::size_t bytes, std::size_t phase = 0)
{
    ByteVector stream(bytes, 0x55);
    for (std::size_t at = phase; at < bytes; at += 188) {
        stream[at] = 'G';
    }
    return stream;
}

ByteVector TimedTable(std::uint8_t stamp)
{
    ByteVector sector = Padded(Bytes("00*4 'G' 40 00 10 00 00 B0 11 00 00 C1 00"));
    sector[0] = stamp;
    sector[500] = 1;
    return sector;
}

struct LengthCase
{
    std::string_view name;
    ByteVector head;  // at sector 1
    ByteVector body;  // after it; a metadata sector follows
    std::uint64_t length;
};

TEST(CarveRules, EachFormatEndsWhereItsRuleSays)
{
    const ByteVector gif = Bytes("'GIF89a' 55*40");
    const ByteVector png = Bytes("89 'PNG' 0D 0A 1A 0A 55*40");
    const ByteVector pngEnd = Bytes("'IEND' AE 42 60 82");
    const ByteVector gifEnd = Bytes("00 3B");
    const ByteVector jpegEnd = Bytes("FF D9");
    const ByteVector tag = Bytes("'TAG'");
    const ByteVector program = Bytes("00 00 01 BA 44 00*9 00 00 01 BB 55*30");
    const ByteVector video = Bytes("00 00 01 B3 14 55*10 00 00 01 B8 55*30");
    const ByteVector ape = Bytes("'APETAGEX' D0 07");
    const ByteVector rest = ByteVector(510);
    const LengthCase cases[] = {
        {"jpeg in its head sector", Padded(Jpeg() + jpegEnd), Noise(3), 34},
        {"jpeg that ends a sector", Padded(Jpeg()), NoiseWith(3, 1022, jpegEnd), 1536},
        {"jpeg whose first mark stands amid data", Padded(Jpeg()),
         NoiseWith(4, 700, jpegEnd) + Noise(1), 512 * 6},
        {"jpeg whose second mark of a block is good", Padded(Jpeg()),
         NoiseWith(2, 700, jpegEnd) + jpegEnd + rest, 512 * 4},
        {"jpeg with a later mark", Padded(Jpeg()), jpegEnd + rest + Noise(127) + jpegEnd + rest,
         512 * 129 + 2},
        {"gif in its head sector", Padded(gif + gifEnd), Noise(3), 48},
        {"gif trailer amid data", Padded(gif + Bytes("55")),
         NoiseWith(2, 7, gifEnd) + gifEnd + rest, 512 * 3 + 2},
        {"png", Padded(png), Noise(2) + Padded(pngEnd), 512 * 3 + 8},
        {"png trailer that noise follows", Padded(png), NoiseWith(2, 9, pngEnd) + Padded(pngEnd),
         512 * 3 + 8},
        {"png trailer over two blocks", Padded(png), NoiseWith(129, 65536 - 4, pngEnd), 512 * 130},
        {"bmp claim", Bytes("'BM' 34 12 00 00 00*4 36 00 00 00 28 00 00 00"), Noise(2), 0x1234},
        {"bmp of no size", Bytes("'BM' 00*8 36 00 00 00 28 00 00 00"), Noise(2), 0},
        {"bmp of 1 GiB", Bytes("'BM' 00 00 00 40 00*4 36 00 00 00 28 00 00 00"), Noise(2),
         134'217'728},
        {"ico", Bytes("00 00 01 00 01 00 10 10 00 00*5 34 12 00 00 16 00 00 00"), Noise(2),
         0x1234 + 0x16},
        {"tiff", Bytes("'II' 2A 00"), Noise(5), 512 * 6},
        {"wav whose claim wraps", Bytes("'RIFF' F8 FF FF FF 'WAVEfmt '"), Noise(2), 0},
        {"avi", Bytes("'RIFF' 00 10 00 00 'AVI LIST'"), Noise(2), 4104},
        {"swf plain", Bytes("'FWS' 05 00 00 00 FF"), Noise(2), 268'435'456},
        {"swf packed", Bytes("'CWS' 09 00 00 00 01"), Noise(2), 512},
        {"asf",
         Bytes("30 26 B2 75 8E 66 CF 11 A6 D9 00 AA 00 62 CE 6C 00*14 A1 DC AB 8C 47 A9 CF 11 8E "
               "E4 00 C0 0C 20 "
               "53 65 00*24 34 12 00*38 00 00 02 00 00 00"),
         Noise(2), 0x1234},
        {"asf that is broadcast",
         Bytes("30 26 B2 75 8E 66 CF 11 A6 D9 00 AA 00 62 CE 6C 00*14 A1 DC AB 8C 47 A9 CF 11 8E "
               "E4 00 C0 0C 20 53 65 00*24 34 12 00*46 01 00 00 00"),
         Noise(2), 512},
        {"program stream through its own heads", Padded(program),
         Padded(program) + Noise(1) + Padded(Bytes("00 00 01 B9")), 512 * 3 + 4},
        {"video stream", Padded(video),
         Noise(1) + Padded(Bytes("00 00 01 B9 55*508")) + Padded(Bytes("00 00 01 B7")),
         512 * 3 + 4},
        {"mp4 with the encoder's text", Bytes("00 00 00 20 'ftypisom'"),
         NoiseWith(2, 100, Bytes("'freeIsoMedia File Produced'")), 512 + 65536 - 508},
        {"RealMedia", Bytes("'.RMF'"), NoiseWith(3, 77, Bytes("'INDX' 00 00 00 14 00*7 02 00*4")),
         512 + 97},
        {"mp3", Bytes("'ID3' 03 00*6"), NoiseWith(140, 512 * 130, tag), 512 + 512 * 130 + 131},
        {"mp3 whose first of two tags counts", Bytes("'ID3' 03 00*6"),
         NoiseWith(20, 100, tag + Noise(1) + tag), 512 + 100 + 131},
        {"ape with header and footer", Bytes("'MAC '"), NoiseWith(9, 100, ape + Noise(2) + ape),
         512 + 100 + 10 + 1024 + 32},
        {"ape without a footer", Bytes("'MAC '"), NoiseWith(9, 100, ape) + Noise(BlockSectors),
         512 + 65536},
        {"midi of two tracks", Bytes("'MThd' 06 00 00 00 00 01 00 02 00 60 'MTrk'"),
         Noise(128) +
             NoiseWith(9, 0, Bytes("'MTrk' 00*4 00 00 01 00 55*30 'MTrk' 00*4 00 00 00 20")),
         14 + 65536 + 264 + 40},
        {"ts whose packets break", ByteVector(Packets(512 * 20)), Noise(9), 376 + 188 * 53},
    };
    for (const LengthCase& one : cases) {
        CarveImage image(512);
        const ByteVector file = Padded(one.head, (one.head.size() + 511) / 512) + one.body;
        image.Put(0, Noise(512));
        image.Put(1, file);
        image.Put(1 + file.size() / 512, Padded(Bytes("'FILE'")));
        EXPECT_EQ(image.Measure(1).lengthBytes, static_cast<std::int64_t>(one.length)) << one.name;
    }
}

TEST(CarveRules, OnlyWholeBlocksAreMeasured)
{
    for (const std::uint64_t behind : {127u, 128u, 255u, 256u}) {
        CarveImage image(1 + 1 + behind);
        image.Put(0, Noise(2 + behind));
        image.Put(1, Jpeg());
        EXPECT_EQ(image.Measure(1).lengthBytes,
                  static_cast<std::int64_t>(512 + behind / 128 * 65536))
            << behind;
    }
    FailingReader failing;
    CarveImage image(600);
    image.Put(0, Noise(600));
    image.Put(1, Jpeg());
    failing.FailSector(2 + 128 + 100);
    EXPECT_EQ(image.Measure(1).lengthBytes,
              512 + 65536);  // the block of the bad sector is lost whole
    failing.Heal();
    CarveImage large(300, 4096);
    large.Put(0, ByteVector(300 * 4096, 0x55));
    large.Put(1, Jpeg());
    large.Put(40, Bytes("'FILE'"));
    EXPECT_EQ(large.Measure(1).lengthBytes, 39 * 4096);
}

TEST(CarveRules, MetadataAndHeadsEndAFileBootSectorsDoNot)
{
    const struct
    {
        std::string_view bytes;
        bool ends;
    } cases[] = {
        {"'FILE'", true},
        {"'INDX'", true},
        {"'RSTR' 00*40 'N' 00 'T' 00 'F' 00 'S' 00", true},
        {"'RSTR'", false},
        {"'$' 00 'S' 00 'T' 00 'A' 00", true},
        {"EB 58 90 'NTFS    '", false},
        {"'%PDF-1.7'", true},
        {"'PHOTO   JPG ' 00*4 CF 50 CF 50 00*4 CF 50 05 00 E8 03 00 00", true},
        {"'.          ' 10", false},
    };
    for (const auto& one : cases) {
        CarveImage image(300);
        image.Put(0, Noise(300));
        image.Put(1, Jpeg());
        image.Put(9, Padded(Bytes(one.bytes)));
        EXPECT_EQ(image.Measure(1).lengthBytes == 8 * 512, one.ends) << one.bytes;
    }
}

TEST(CarveRules, TransportStreamsRememberWhatWasCarvedBefore)
{
    CarveImage image(512);
    image.Put(0, Noise(512));
    image.Put(3, Packets(512 * 40));
    image.Put(100, Jpeg() + ByteVector(480));
    image.Put(101, Packets(512 * 20, 0));
    image.Put(121, Padded(Bytes("'FILE'")));
    // Its own aligned sectors do not end it; the run breaks at sector 43, the scan goes on to the jpeg.
    const std::int64_t run = 376 + (40 * 512 - 376) / 188 * 188 + 188;
    const CarvedHead stream = image.Measure(3);
    EXPECT_EQ(stream.typeId, FileTypeId::Ts);
    EXPECT_EQ(stream.lengthBytes, run);
    EXPECT_EQ(image.Measure(3).typeId, FileTypeId::None);  // carved before
    CarveContext::Instance().TsRunHead = 0;
    EXPECT_EQ(image.Measure(3).typeId, FileTypeId::Ts);  // but nobody looks past another file
    EXPECT_TRUE(CarveContext::Instance().TsRangeList.Contains(43));
    EXPECT_FALSE(CarveContext::Instance().TsRangeList.Contains(44));
    // The sector before the second stream has a sync byte where a packet would begin.
    image.Put(100, NoiseWith(1, 512 - 188, Bytes("'G'")));
    ResetCarveContext();
    EXPECT_EQ(image.Measure(101).typeId, FileTypeId::None);
    EXPECT_TRUE(image.Verify(101, "ts"));  // heads are judged without that look, and leave it so
    EXPECT_EQ(image.Measure(101).typeId, FileTypeId::Ts);
    image.Put(0, Packets(512 * 20));
    ResetCarveContext();
    EXPECT_EQ(image.Measure(0).typeId,
              FileTypeId::None);  // nothing can be read before sector 0
}

TEST(CarveRules, TimedStreamsAreEndedByATableOfTimeZeroOnly)
{
    CarveImage image(512);
    image.Put(0, Noise(512));
    image.Put(1, TimedTable(7));
    image.Put(9, TimedTable(8));
    image.Put(20, TimedTable(0));
    image.Put(30, Padded(Bytes("'FILE'")));
    EXPECT_EQ(image.Measure(1).lengthBytes, 19 * 512);
    EXPECT_EQ(image.Measure(9).typeId,
              FileTypeId::None);  // the sector after an mts is still inside
    EXPECT_EQ(image.Measure(9).typeId, FileTypeId::Mts);
}

TEST(CarveRules, ACancelMakesNoFileAnotherStopCutsItShort)
{
    for (const ResultCode answer : {ResultCancelled, ResultGeneralFailure}) {
        CarveImage image(512);
        image.Put(0, Noise(512));
        image.Put(1, Jpeg());
        ResultCode code = answer;
        CarveContext::Instance().callbackContext = &code;
        CarveContext::Instance().scanCallback = [](void* context, auto...) {
            return *static_cast<ResultCode*>(context);
        };
        ResultCode result = ResultSuccess;
        const CarvedHead head = image.Measure(1, &result);
        ResetCarveContext();
        EXPECT_EQ(result, answer == ResultCancelled ? ResultCancelled : ResultSuccess);
        EXPECT_EQ(head.lengthBytes, answer == ResultCancelled ? 0 : 512);
    }
}

// Everything that remembers what it read or searched must answer as if it did not.
TEST(CarveRules, WhatIsRememberedChangesNoFile)
{
    static constexpr std::string_view Parts[] = {"FF D8 FF E0 00 10 'JFIF' 00*6",
                                                 "'GIF89a' 00 00",
                                                 "89 'PNG' 0D 0A 1A 0A",
                                                 "'ID3' 03 00*6",
                                                 "'MAC '",
                                                 "'.RMF'",
                                                 "00 00 00 20 'ftypisom' 00*20",
                                                 "D0 CF 11 E0 00*12",
                                                 "'PK' 03 04 00*44",
                                                 "'FILE'",
                                                 "'TAG'",
                                                 "FF D9",
                                                 "00 3B",
                                                 "'IEND' AE 42 60 82",
                                                 "'APETAGEX' D0 07",
                                                 "00 00 01 BA 44 00*9 00 00 01 BB",
                                                 "00 00 01 B9",
                                                 "'freeIsoMedia File Produced'",
                                                 "'II' 2A 00",
                                                 "'RIFF' 00 01 00 00 'WAVEfmt '"};
    for (std::uint64_t seed = 1; seed <= 12; ++seed) {
        std::mt19937_64 random(seed);
        const std::uint64_t sectors = 500 + random() % 500;
        ByteVector bytes = RandomBytes(sectors * 512, seed);
        const std::uint64_t every = 1 + random() % 40;
        for (std::uint64_t sector = 0; sector < sectors; ++sector) {
            if (random() % every != 0) {
                continue;
            }
            const ByteVector part = Bytes(Parts[random() % std::size(Parts)]);
            const bool atEnd = random() % 3 == 0;
            const std::uint64_t at = sector * 512 + (atEnd ? 512 - part.size() : 0);
            std::copy(part.begin(), part.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
            if (random() % 2 == 0 && !atEnd) {
                std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at + part.size()),
                            512 - part.size(), 0);
            }
        }
        for (int stream = 0; stream < 3; ++stream) {
            const ByteVector packets = Packets(30 * 512, stream == 1 ? random() % 188 : 0);
            std::copy(packets.begin(), packets.end(),
                      bytes.begin() + static_cast<std::ptrdiff_t>(random() % (sectors - 31) * 512));
        }
        FailingReader failing;
        CarveImage image(sectors);
        image.Put(0, bytes);
        EXPECT_EQ(image.Carve(), image.Carve(true)) << "seed " << seed;
    }
}

TEST(ByteSearch, FindsWhatAPlainSearchFinds)
{
    std::mt19937_64 random(9);
    for (const std::string_view mark : {std::string_view("ab"), std::string_view("aab"),
                                        std::string_view("a\0b\0", 4), std::string_view("b")}) {
        ByteVector bytes(4000);
        for (std::uint8_t& byte : bytes) {
            byte = static_cast<std::uint8_t>("ab\0\0\0\0"[random() % 6]);
        }
        MarkFinder any(mark);
        MarkFinder closing(mark, MarkFinder::Accept::ClosingFile);
        for (int turn = 0; turn < 3000; ++turn) {
            const std::size_t start = random() % 7 * 512;
            const std::size_t size = 512 * (1 + random() % (7 - start / 512));
            const ByteView block(bytes.data() + start, size);
            const std::size_t from = random() % size;
            const auto plain = [&](std::size_t at) {
                const auto hit = std::search(block.Span().begin() + static_cast<std::ptrdiff_t>(at),
                                             block.Span().end(), mark.begin(), mark.end(),
                                             [](std::uint8_t left, char right) {
                                                 return left == static_cast<std::uint8_t>(right);
                                             });
                return hit == block.Span().end()
                           ? NotFound
                           : static_cast<std::size_t>(hit - block.Span().begin());
            };
            const SearchBlock searched = {block, start, 1, 512};
            ASSERT_EQ(any.Find(searched, from), plain(from)) << turn;
            std::size_t accepted = plain(from);
            while (accepted != NotFound && !EndsFile(block, accepted + mark.size(), 512)) {
                accepted = plain(accepted + 1);
            }
            ASSERT_EQ(closing.Find(searched, from), accepted) << turn;
        }
    }
}

TEST(SectorWindow, ReadsAndFailsAsTheSourceDoes)
{
    CarveImage image(900);
    image.Put(0, RandomBytes(900 * 512, 4));
    FailingReader failing;
    SectorSource source;
    ASSERT_EQ(source.OpenImage(image.Path()), ResultSuccess);
    failing.FailSector(333);
    SectorWindow window;
    std::mt19937_64 random(2);
    ByteVector plain(128 * 512);
    std::uint64_t lba = 0;
    std::size_t failures = 0;
    for (int turn = 0; turn < 20000; ++turn) {
        lba = random() % 50 == 0 ? random() % 1000 : lba + random() % 5 - (lba > 2 ? 1 : 0);
        const auto count = static_cast<std::int32_t>(random() % 4 == 0 ? 128 : 1 + random() % 8);
        window.pinned = random() % 4 == 0;
        const ByteView view = window.Read(source, lba, count, 512);
        std::int32_t got = 0;
        const bool read = source.ReadSectors(plain.data(), count, lba, 512, &got) == ResultSuccess;
        ASSERT_EQ(!view.Empty(), read) << "turn " << turn << " lba " << lba << " count " << count;
        ASSERT_TRUE(!read || std::equal(view.Span().begin(), view.Span().end(), plain.begin()))
            << turn;
        failures += read ? 0 : 1;
    }
    EXPECT_GT(failures, 100u);
}

}  // namespace
