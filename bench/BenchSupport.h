// Image files in the page cache, the plain read loop that everything is compared with, and the comparing.
#pragma once

#include "tests/support/TempFolder.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

// A number of megabytes from the environment, else the default.
std::uint64_t MebibytesFromEnvironment(const char* name, std::uint64_t defaultMebibytes);

// An image file that lives as long as the object, written piece by piece and read once, so that it lies in the cache.
class BenchImage
{
public:
    // fill is called with the same buffer and the position until sizeBytes are written.
    BenchImage(std::uint64_t sizeBytes,
               const std::function<void(ByteVector& block, std::uint64_t position)>& fill);

    const std::filesystem::path& Path() const { return m_path; }
    std::uint64_t SizeBytes() const { return m_sizeBytes; }
    // Seconds for reading it from start to end, 64 KiB at a time, and looking at nothing.
    double ReadLoopSeconds() const;

private:
    TempFolder m_folder;
    std::filesystem::path m_path;
    std::uint64_t m_sizeBytes;
};

// Runs the read loop and the work by turns, and sets the counters "ratio" (fastest work to fastest read loop) and
// "read_MiBps". A ratio is comparable only within its run of the program.
void CompareWithReading(benchmark::State& state,
                        const BenchImage& image,
                        const std::function<void()>& work);
