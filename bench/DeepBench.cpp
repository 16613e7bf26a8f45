// Whole deep scans: over noise with pictures sprinkled in, and over disks that hold nothing but one kind of metadata, in
// three sizes, so that a cost that grows faster than the disk shows. And the quick FAT scan of a card full of deletions.
#include "bench/BenchSupport.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/deep/ProfessionalRecovery.h"
#include "recovery/engines/RecoveryEngineFactory.h"
#include "tests/support/Bytes.h"
#include "tests/support/Pictures.h"

#include <chrono>
#include <cstring>
#include <stdexcept>

namespace {

constexpr std::uint64_t Mebibyte = 1024 * 1024;
constexpr std::size_t SectorBytes = 512;
constexpr int Repeats = 3;

template <typename T>
void Put(ByteVector& bytes, std::size_t at, T value)
{
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

std::uint64_t Scan(const BenchImage& image, ScanDepth depth)
{
    const DataFolder data;
    const auto engine =
        RecoveryEngineFactory(OpenLog()).MakeEngineForImage(image.Path(), 1001, depth);
    if (engine == nullptr || engine->Scan(nullptr) != ResultSuccess) {
        throw std::runtime_error("cannot scan the image of a benchmark");
    }
    return engine->GetRecordCount();
}

void Run(benchmark::State& state, const BenchImage& image, ScanDepth depth)
{
    std::uint64_t found = 0;
    CompareWithReading(state, image, [&] { found = Scan(image, depth); });
    state.counters["records"] = static_cast<double>(found);
    state.counters["MiB"] = static_cast<double>(image.SizeBytes()) / Mebibyte;
}

// Noise, with a picture in every 256th block.
BenchImage NoiseImage(bool withFiles)
{
    const std::uint64_t size =
        MebibytesFromEnvironment("LUMIVAULT_BENCH_DISK_MIB", 1024) * Mebibyte;
    const ByteVector noise = RandomBytes(4 * Mebibyte, 1);
    const ByteVector picture = MakeJpeg(640, 480, 1);
    return BenchImage(size, [&](ByteVector& block, std::uint64_t position) {
        std::memcpy(block.data(), noise.data() + position % noise.size(), block.size());
        Put(block, 8, position);
        if (withFiles && position / block.size() % 256 == 7) {
            std::memcpy(block.data() + 1024, picture.data(), picture.size());
        }
    });
}

void DeepNoise(benchmark::State& state)
{
    Run(state, NoiseImage(state.range(0) != 0), ScanDepth::Deep);
}

double SecondsWithCheckpoints(const BenchImage& image, std::uint64_t interval)
{
    const DataFolder data;
    const auto engine =
        RecoveryEngineFactory(OpenLog()).MakeEngineForImage(image.Path(), 1001, ScanDepth::Deep);
    auto& deep = dynamic_cast<CProfessionalRecovery&>(*engine);
    deep.SetCheckpointInterval(interval);
    const auto begin = std::chrono::steady_clock::now();
    if (deep.Scan(nullptr) != ResultSuccess) {
        throw std::runtime_error("cannot scan the image of a benchmark");
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// What one checkpoint takes, and how many percent of a scan's time that makes when there is one every five seconds.
void Checkpoints(benchmark::State& state)
{
    constexpr std::uint64_t Interval = 10;  // milliseconds
    constexpr double UsualInterval = 5;     // seconds
    const BenchImage image = NoiseImage(true);
    double without = 0;
    double with = 0;
    for (auto _ : state) {
        without += SecondsWithCheckpoints(image, UINT64_MAX);
        const double seconds = SecondsWithCheckpoints(image, Interval);
        with += seconds;
        state.SetIterationTime(seconds);
    }
    // Between two of them the pass runs for the interval, so that it is the undisturbed scan that counts them.
    const double each = std::max(0.0, with - without) / (without * 1000 / Interval);
    state.counters["ms_each"] = each * 1000;
    state.counters["percent"] = each / UsualInterval * 100;
}

void DirectoryEntry(
    ByteVector& block, std::size_t at, std::uint32_t number, std::uint8_t attributes, bool deleted)
{
    constexpr std::uint16_t Day = (2020 - 1980) << 9 | 5 << 5 | 17;
    char name[16] = {};
    std::snprintf(name, sizeof name, "F%07uJPG", number % 10000000);
    std::memcpy(block.data() + at, name, 11);
    if (deleted) {
        block[at] = 0xE5;
    }
    block[at + 11] = attributes;
    for (const std::size_t date : {16u, 18u, 24u}) {
        Put(block, at + date, Day);
    }
    Put(block, at + 20, static_cast<std::uint16_t>(deleted ? 0 : number >> 16));
    Put(block, at + 26, static_cast<std::uint16_t>(number));
    Put(block, at + 28, std::uint32_t{attributes == 0x20 ? 5000u : 0u});
}

// Every sector the first of a folder, in clusters of one sector, each inside the one before, with files in it.
void DeepDirectories(benchmark::State& state)
{
    const bool deleted = state.range(1) != 0;
    const auto size = static_cast<std::uint64_t>(state.range(0)) * Mebibyte;
    const BenchImage image(size, [&](ByteVector& block, std::uint64_t position) {
        for (std::size_t at = 0; at < block.size(); at += SectorBytes) {
            const auto sector = static_cast<std::uint32_t>((position + at) / SectorBytes);
            std::memset(block.data() + at, 0, SectorBytes);
            DirectoryEntry(block, at, sector + 2, 0x10, false);
            std::memcpy(block.data() + at, ".          ", 11);
            DirectoryEntry(block, at + 32, sector + 1, 0x10, false);
            std::memcpy(block.data() + at + 32, "..         ", 11);
            for (std::uint32_t i = 2; i < 8; ++i) {
                DirectoryEntry(block, at + i * 32, sector * 16 + i, i == 2 ? 0x10 : 0x20,
                               deleted && i > 2);
            }
        }
    });
    Run(state, image, ScanDepth::Deep);
}

// The same with each folder inside the one after it, whose entry for it comes when all below it has been placed.
void DeepFoldersBehind(benchmark::State& state)
{
    const auto size = static_cast<std::uint64_t>(state.range(0)) * Mebibyte;
    const BenchImage image(size, [&](ByteVector& block, std::uint64_t position) {
        for (std::size_t at = 0; at < block.size(); at += SectorBytes) {
            const auto cluster = static_cast<std::uint32_t>((position + at) / SectorBytes) + 2;
            std::memset(block.data() + at, 0, SectorBytes);
            DirectoryEntry(block, at, cluster, 0x10, false);
            std::memcpy(block.data() + at, ".          ", 11);
            DirectoryEntry(block, at + 32, cluster + 1, 0x10, false);
            std::memcpy(block.data() + at + 32, "..         ", 11);
            DirectoryEntry(block, at + 64, cluster - 1, 0x10, false);
            for (std::uint32_t i = 3; i < 8; ++i) {
                DirectoryEntry(block, at + i * 32, cluster * 16 + i, 0x20, false);
            }
        }
    });
    Run(state, image, ScanDepth::Whole);
}

// Every second sector a FILE record of a deleted file, in folders that are such records too.
void DeepFileRecords(benchmark::State& state)
{
    const auto size = static_cast<std::uint64_t>(state.range(0)) * Mebibyte;
    const BenchImage image(size, [](ByteVector& block, std::uint64_t position) {
        for (std::size_t at = 0; at < block.size(); at += 1024) {
            const auto number = static_cast<std::uint32_t>((position + at) / 1024 + 100);
            std::memset(block.data() + at, 0, 1024);
            std::memcpy(block.data() + at, "FILE", 4);
            Put(block, at + 20, std::uint16_t{56});
            Put(block, at + 22, static_cast<std::uint16_t>(number % 8 == 0 ? 3 : 0));
            Put(block, at + 24, std::uint32_t{56 + 112 + 8});
            Put(block, at + 28, std::uint32_t{1024});
            Put(block, at + 44, number);
            Put(block, at + 56, std::uint32_t{0x30});
            Put(block, at + 60, std::uint32_t{112});
            Put(block, at + 56 + 24, number > 108 ? (number - 8) / 8 * 8 : 5u);
            block[at + 56 + 88] = 5;
            for (std::size_t i = 0; i < 5; ++i) {
                Put(block, at + 56 + 90 + 2 * i, static_cast<std::uint16_t>("a.txt"[i]));
            }
            Put(block, at + 56 + 112, std::uint32_t{0xFFFFFFFF});
        }
    });
    Run(state, image, ScanDepth::Deep);
}

// A FAT32 card of 16-sector clusters whose folders hold deleted pictures, 120 to a folder.
void FatCardScan(benchmark::State& state, std::uint64_t cardBytes, ScanDepth depth)
{
    constexpr std::uint32_t SectorsPerCluster = 16;
    constexpr std::uint32_t FatSectors = 1024;
    constexpr std::uint32_t DataSector = 32 + FatSectors;
    constexpr std::uint32_t FilesPerFolder = 120;
    const auto files = static_cast<std::uint32_t>(state.range(0));
    const std::uint32_t folders = files / FilesPerFolder;
    const ByteVector picture = MakeJpeg(64, 48, 1);
    const BenchImage image(cardBytes, [&](ByteVector& block, std::uint64_t position) {
        std::fill(block.begin(), block.end(), std::uint8_t{0});
        if (position == 0) {
            std::memcpy(block.data() + 11, Bytes("00 02 10 20 00 01").data(), 6);
            Put(block, 32, static_cast<std::uint32_t>(cardBytes / SectorBytes));
            Put(block, 36, FatSectors);
            Put(block, 44, std::uint32_t{2});
            std::memcpy(block.data() + 82, "FAT32   ", 8);
            Put(block, 510, std::uint16_t{0xAA55});
        }
        for (std::size_t at = 0; at < block.size(); at += SectorBytes) {
            const std::uint64_t sector = (position + at) / SectorBytes;
            if (sector < DataSector || (sector - DataSector) % SectorsPerCluster != 0) {
                continue;
            }
            const auto cluster =
                static_cast<std::uint32_t>((sector - DataSector) / SectorsPerCluster + 2);
            if (cluster == 2) {
                for (std::uint32_t i = 0; i < folders && i * 32 < SectorsPerCluster * SectorBytes;
                     ++i) {
                    DirectoryEntry(block, at + i * 32, 3 + i, 0x10, false);
                }
            } else if (cluster < 3 + folders) {
                DirectoryEntry(block, at, cluster, 0x10, false);
                std::memcpy(block.data() + at, ".          ", 11);
                DirectoryEntry(block, at + 32, 0, 0x10, false);
                std::memcpy(block.data() + at + 32, "..         ", 11);
                for (std::uint32_t i = 0; i < FilesPerFolder; ++i) {
                    const std::uint32_t first = 3 + folders + (cluster - 3) * FilesPerFolder + i;
                    DirectoryEntry(block, at + 64 + i * 32, first, 0x20, true);
                }
            } else {
                std::memcpy(block.data() + at, picture.data(),
                            std::min(picture.size(), block.size() - at));
            }
        }
    });
    Run(state, image, depth);
}

void FastFat(benchmark::State& state)
{
    FatCardScan(state, 512 * Mebibyte, ScanDepth::Quick);
}

void DeepFatCard(benchmark::State& state)
{
    FatCardScan(state, 1024 * Mebibyte, ScanDepth::Deep);
}

BENCHMARK(DeepNoise)->Arg(0)->Arg(1)->UseManualTime()->Iterations(Repeats)->Unit(
    benchmark::kMillisecond);
BENCHMARK(Checkpoints)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);
BENCHMARK(DeepDirectories)
    ->Args({16, 0})
    ->Args({64, 0})
    ->Args({256, 0})
    ->Args({16, 1})
    ->Args({64, 1})
    ->Args({256, 1})
    ->UseManualTime()
    ->Iterations(Repeats)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(DeepFoldersBehind)
    ->Arg(1)
    ->Arg(4)
    ->Arg(16)
    ->UseManualTime()
    ->Iterations(Repeats)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(DeepFileRecords)
    ->Arg(16)
    ->Arg(64)
    ->Arg(256)
    ->UseManualTime()
    ->Iterations(Repeats)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(DeepFatCard)
    ->Arg(20000)
    ->UseManualTime()
    ->Iterations(Repeats)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(FastFat)->Arg(20000)->UseManualTime()->Iterations(Repeats)->Unit(benchmark::kMillisecond);

}  // namespace
