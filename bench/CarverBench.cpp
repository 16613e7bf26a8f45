// The carver over whole images, as the deep pass drives it: every sector shown to it, its jumps followed.
#include "bench/BenchSupport.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/FileTypeRecovery.h"
#include "tests/support/Bytes.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SectorSize = 512;
constexpr std::uint64_t Mebibyte = 1024 * 1024;
constexpr int Repeats = 7;

// Reading included. Returns the count of files, so that a case that finds nothing shows.
std::int64_t CarveImage(const BenchImage& image)
{
    const DataFolder data;
    CFileTypeRecovery carver(OpenLog());
    SectorSource source;
    if (carver.OpenImageFile(image.Path(), 0) != ResultSuccess ||
        source.OpenImage(image.Path()) != ResultSuccess) {
        throw std::runtime_error("cannot open the image of a benchmark");
    }
    CarveContext::Instance().TsRangeList.Clear();
    constexpr std::int64_t BlockSectors = 65536 / SectorSize;
    ByteVector block(65536);
    const auto total = static_cast<std::int64_t>(source.totalSectors);
    CarveProgress progress;
    progress.sectorsTotal = source.totalSectors;
    std::int64_t found = 0;
    std::int64_t step = 1;
    for (std::int64_t position = 0; position < total;) {
        const std::int64_t count = std::min(BlockSectors, total - position);
        std::int32_t got = 0;
        (void)source.ReadSectors(block.data(), static_cast<std::int32_t>(count),
                                 static_cast<std::uint64_t>(position), SectorSize, &got);
        std::int64_t at = 0;
        for (; at < count; at += step) {
            const ByteView sector(block.data() + at * SectorSize, SectorSize);
            (void)carver.CarveAtSector(sector, static_cast<std::uint64_t>(position + at), progress,
                                       source, SectorSize, step, found);
        }
        position += at;
        progress.sectorsDone = static_cast<std::uint64_t>(position);
    }
    return found;
}

void Run(benchmark::State& state, const BenchImage& image)
{
    std::int64_t found = 0;
    CompareWithReading(state, image, [&image, &found] { found = CarveImage(image); });
    state.counters["files"] = static_cast<double>(found);
}

std::uint64_t ImageBytes()
{
    return MebibytesFromEnvironment("LUMIVAULT_BENCH_MIB", 256) * Mebibyte;
}

void Noise(benchmark::State& state)
{
    const BenchImage image(ImageBytes(), [](ByteVector& block, std::uint64_t position) {
        block = RandomBytes(block.size(), position);
    });
    Run(state, image);
}

// The same with a head in front: all of it is measured as one film, so every sector is looked at as a boundary.
void MeasuredNoise(benchmark::State& state)
{
    const BenchImage image(ImageBytes(), [](ByteVector& block, std::uint64_t position) {
        block = RandomBytes(block.size(), position);
        if (position == 0) {
            std::memcpy(block.data(), "\x1A\x45\xDF\xA3", 4);
        }
    });
    Run(state, image);
}

void Zeros(benchmark::State& state)
{
    const BenchImage image(ImageBytes(), [](ByteVector&, std::uint64_t) {});
    Run(state, image);
}

// Words of letters and line ends, as logs and pages are.
void Text(benchmark::State& state)
{
    constexpr std::string_view Letters =
        "etaoinshrdlucmfwypvbgkjqxzETAOINSHRDLUCM  ,.-\"\n0123456789<>/=";
    const BenchImage image(ImageBytes(), [Letters](ByteVector& block, std::uint64_t position) {
        block = RandomBytes(block.size(), position);
        for (std::uint8_t& byte : block) {
            byte = static_cast<std::uint8_t>(Letters[byte % Letters.size()]);
        }
    });
    Run(state, image);
}

// Pictures of 1 to 60 KiB, one after the other at sector borders, noise between some.
void Pictures(benchmark::State& state)
{
    ByteVector pending;
    const BenchImage image(ImageBytes(), [&pending](ByteVector& block, std::uint64_t position) {
        std::uint64_t seed = position;
        while (pending.size() < block.size()) {
            ++seed;
            const auto side = static_cast<std::uint32_t>(32 + seed * 7919 % 18 * 8);
            ByteVector picture = seed % 4 == 0   ? MakePng(side, side, seed)
                                 : seed % 4 == 1 ? MakeBmp(side, side / 2, seed)
                                 : seed % 4 == 2 ? RandomBytes(side * 64, seed)
                                                 : MakeJpeg(side * 8, side * 4, seed);
            picture.resize((picture.size() + SectorSize - 1) / SectorSize * SectorSize);
            pending.insert(pending.end(), picture.begin(), picture.end());
        }
        std::copy_n(pending.begin(), block.size(), block.begin());
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(block.size()));
    });
    Run(state, image);
}

// 188-byte packets from end to end. LUMIVAULT_BENCH_STREAM_MIB=2048 makes it a stream of 2 GiB.
void TransportStream(benchmark::State& state)
{
    const std::uint64_t size =
        MebibytesFromEnvironment("LUMIVAULT_BENCH_STREAM_MIB", 256) * Mebibyte;
    const BenchImage image(size, [](ByteVector& block, std::uint64_t position) {
        block = RandomBytes(block.size(), position);
        for (std::uint64_t at = (188 + SectorSize - position % 188) % 188; at < block.size();
             at += 188) {
            block[at] = 0x47;
        }
        if (position == 0) {
            std::fill_n(block.begin(), SectorSize, 1);  // nothing begins in the very first sector
        }
    });
    Run(state, image);
}

// The same head at the start of every sector, noise after it: each is tried, measured and mostly recorded.
void HeadInEverySector(benchmark::State& state, std::string_view head)
{
    const std::uint64_t size = MebibytesFromEnvironment("LUMIVAULT_BENCH_HEADS_MIB", 64) * Mebibyte;
    const BenchImage image(size, [head](ByteVector& block, std::uint64_t position) {
        block = RandomBytes(block.size(), position);
        for (std::size_t at = 0; at < block.size(); at += SectorSize) {
            std::memcpy(block.data() + at, head.data(), head.size());
        }
    });
    Run(state, image);
}

// A zip's head in every sector and nothing but signatures after it: the most that there is to look at.
void SignaturesThroughout(benchmark::State& state)
{
    const std::uint64_t size =
        MebibytesFromEnvironment("LUMIVAULT_BENCH_HEADS_MIB", 64) * Mebibyte / 4;
    const BenchImage image(size, [](ByteVector& block, std::uint64_t) {
        for (std::size_t at = 0; at < block.size(); at += 4) {
            std::memcpy(block.data() + at, "PK\3\4", 4);
        }
    });
    Run(state, image);
}

// Sync bytes where a stream would have them, in every sector anew: what follows has to be looked at each time.
void PacketsInEverySector(benchmark::State& state)
{
    const std::uint64_t size = MebibytesFromEnvironment("LUMIVAULT_BENCH_HEADS_MIB", 64) * Mebibyte;
    const BenchImage image(size, [](ByteVector& block, std::uint64_t position) {
        block = RandomBytes(block.size(), position);
        for (std::size_t at = 0; at < block.size(); at += SectorSize) {
            block[at] = block[at + 188] = block[at + 376] = 0x47;
        }
    });
    Run(state, image);
}

// A directory of long-name pieces in every sector: the costliest one to judge.
void LongNamesInEverySector(benchmark::State& state)
{
    const std::uint64_t size = MebibytesFromEnvironment("LUMIVAULT_BENCH_HEADS_MIB", 64) * Mebibyte;
    const BenchImage image(size, [](ByteVector& block, std::uint64_t position) {
        if (position == 0) {
            block = RandomBytes(block.size(), 1);
            std::memcpy(block.data(), "\x1A\x45\xDF\xA3", 4);  // something to measure through them
            return;
        }
        for (std::size_t at = 0; at < block.size(); ++at) {
            block[at] = static_cast<std::uint8_t>(at % 32 == 0 ? 1 + at / 32 % 15 : at % 31 + 65);
        }
        for (std::size_t at = 0; at < block.size(); at += 32) {
            block[at + 11] = 0x0F;
            block[at + 13] = 0x55;
            block[at + 26] = block[at + 27] =
                static_cast<std::uint8_t>(at % SectorSize == 480 ? 1 : 0);
        }
    });
    Run(state, image);
}

void Register(const char* name, const std::function<void(benchmark::State&)>& run)
{
    benchmark::RegisterBenchmark(name, run)->Iterations(Repeats)->UseManualTime()->Unit(
        benchmark::kMillisecond);
}

const bool Registered = [] {
    Register("Carver/Noise", Noise);
    Register("Carver/MeasuredNoise", MeasuredNoise);
    Register("Carver/Zeros", Zeros);
    Register("Carver/Text", Text);
    Register("Carver/Pictures", Pictures);
    Register("Carver/TransportStream", TransportStream);
    Register("Carver/LongNamesInEverySector", LongNamesInEverySector);
    Register("Carver/PacketsInEverySector", PacketsInEverySector);
    Register("Carver/SignaturesThroughout", SignaturesThroughout);
    struct Case
    {
        const char* name;
        std::string_view head;
    };
    for (const Case& one : {
             Case{"Carver/CompoundFileInEverySector", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv},
             Case{"Carver/ZipInEverySector", "PK\3\4"sv},
             Case{"Carver/GifInEverySector", "GIF89a"sv},
             Case{"Carver/JpegInEverySector", "\xFF\xD8\xFF\xE0\0\x10JFIF"sv},
             Case{"Carver/Mp4InEverySector", "\0\0\0\x20"
                                             "ftypisom"sv},
         }) {
        const std::string_view head = one.head;
        Register(one.name, [head](benchmark::State& state) { HeadInEverySector(state, head); });
    }
    return true;
}();

}  // namespace
