// Imaging, against reading the disk and nothing else; and the counting of free space, against reading the table counted.
#include "bench/BenchSupport.h"
#include "storage/DriveRegistry.h"
#include "storage/RawDiskCopier.h"
#include "storage/VolumeSpace.h"
#include "tests/support/Bytes.h"

#include <cstring>
#include <stdexcept>

namespace {

constexpr int Repeats = 5;
constexpr std::uint64_t SectorSize = 512;
constexpr std::uint32_t ReservedSectors = 32;

void Put(ByteVector& bytes, std::size_t offset, std::uint32_t value, std::size_t width)
{
    std::memcpy(bytes.data() + offset, &value, width);
}

// Writing to a file that the cache holds is part of it: a real destination is slower.
void Imaging(benchmark::State& state)
{
    const BenchImage disk(MebibytesFromEnvironment("BENCH_MIB", 1024) << 20,
                          [](ByteVector& block, std::uint64_t position) {
                              block = RandomBytes(block.size(), position);
                          });
    const TempFolder folder;
    const std::uint32_t number = DriveRegistry::Instance().NumberOf(disk.Path());
    CompareWithReading(state, disk, [&] {
        RawDiskCopier copier;
        if (copier.Copy(number, 0, 0, folder / "image", nullptr, nullptr) != ResultSuccess) {
            throw std::runtime_error("not copied");
        }
    });
    DriveRegistry::Instance().Forget(number);
}

// A file that is all FAT of 32-bit entries, in the middle of a volume told to be large enough for it; a third is free.
void CountingFree(benchmark::State& state)
{
    const std::uint64_t fatBytes = std::uint64_t{256} << 20;
    const auto entries = static_cast<std::uint32_t>(fatBytes / 4);
    const BenchImage volume(
        ReservedSectors * SectorSize + fatBytes, [&](ByteVector& block, std::uint64_t position) {
            for (std::size_t at = 0; at + 4 <= block.size(); at += 4) {
                Put(block, at, at % 12 == 0 ? 0 : 0x0FFFFFFF, 4);
            }
            if (position == 0) {
                const auto fatSectors = static_cast<std::uint32_t>(fatBytes / SectorSize);
                std::fill_n(block.begin(), SectorSize, std::uint8_t{0});
                Put(block, 11, SectorSize, 2);
                Put(block, 13, 64, 1);
                Put(block, 14, ReservedSectors, 2);
                Put(block, 16, 1, 1);
                Put(block, 32, UINT32_MAX, 4);
                Put(block, 36, fatSectors, 4);
                Put(block, 510, 0xAA55, 2);
            }
        });
    CompareWithReading(state, volume, [&] {
        OpenedSource source;
        VolumeSpace space;
        if (OpenImageSource(volume.Path(), source) != ResultSuccess ||
            !ReadVolumeSpace(*source.reader, 0, std::uint64_t{entries} * 64 * SectorSize, space)) {
            throw std::runtime_error("not counted");
        }
        benchmark::DoNotOptimize(space);
    });
}

const bool Registered = [] {
    for (const auto& [name, run] : {std::pair("Storage/Imaging", &Imaging),
                                    std::pair("Storage/CountingFree", &CountingFree)}) {
        benchmark::RegisterBenchmark(name, run)->Iterations(Repeats)->UseManualTime()->Unit(
            benchmark::kMillisecond);
    }
    return true;
}();

}  // namespace
