#include "bench/BenchSupport.h"

#include "platform/FileHandle.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <stdexcept>

namespace {

constexpr std::size_t BlockBytes = 65536;

double SecondsOf(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

std::uint64_t MebibytesFromEnvironment(const char* name, std::uint64_t defaultMebibytes)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::stoull(text) : defaultMebibytes;
}

BenchImage::BenchImage(std::uint64_t sizeBytes,
                       const std::function<void(ByteVector& block, std::uint64_t position)>& fill)
    : m_path(m_folder / "image"), m_sizeBytes(sizeBytes)
{
    FileHandle file;
    if (file.OpenOrCreate(m_path) != ResultSuccess) {
        throw std::runtime_error("cannot make the image of a benchmark");
    }
    ByteVector block(BlockBytes);
    for (std::uint64_t position = 0; position < sizeBytes; position += block.size()) {
        fill(block, position);
        if (file.WriteAt(position, block.data(), block.size()) != ResultSuccess) {
            throw std::runtime_error("no room for the image of a benchmark");
        }
    }
    (void)ReadLoopSeconds();
}

double BenchImage::ReadLoopSeconds() const
{
    return SecondsOf([this] {
        FileHandle file;
        ByteVector block(BlockBytes);
        if (file.OpenForReading(m_path) != ResultSuccess) {
            throw std::runtime_error("cannot read the image of a benchmark");
        }
        std::size_t got = BlockBytes;
        for (std::uint64_t position = 0; got == BlockBytes; position += got) {
            if (file.ReadAt(position, block.data(), block.size(), &got) != ResultSuccess) {
                throw std::runtime_error("cannot read the image of a benchmark");
            }
            benchmark::DoNotOptimize(block.data());
        }
    });
}

void CompareWithReading(benchmark::State& state,
                        const BenchImage& image,
                        const std::function<void()>& work)
{
    double fastestRead = std::numeric_limits<double>::max();
    double fastestWork = std::numeric_limits<double>::max();
    for (auto _ : state) {
        fastestRead = std::min(fastestRead, image.ReadLoopSeconds());
        const double seconds = SecondsOf(work);
        fastestWork = std::min(fastestWork, seconds);
        state.SetIterationTime(seconds);
    }
    const double mebibytes = static_cast<double>(image.SizeBytes()) / (1024 * 1024);
    state.counters["ratio"] = fastestWork / fastestRead;
    state.counters["read_MiBps"] = mebibytes / fastestRead;
}
