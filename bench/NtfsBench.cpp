// The quick NTFS scan of tables full of deleted files, against reading the same table and nothing else: the cost must
// follow the table, not files times folders.
#include "bench/BenchSupport.h"
#include "recovery/engines/RecoveryEngineFactory.h"
#include "recovery/ntfs/FastNtfsRecovery.h"
#include "tests/recovery/ntfs/NtfsImage.h"
#include "tests/support/Bytes.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace {

constexpr std::uint32_t FirstFile = 24;
constexpr std::uint32_t FolderEvery = 20;  // one folder, live, to so many records
constexpr std::uint32_t FolderLevels = 6;
constexpr std::uint64_t TableStart = std::uint64_t{NtfsImage::MftCluster} * NtfsImage::SectorSize;
constexpr std::uint64_t BlockBytes = 65536;
constexpr std::uint32_t DataSectors = 128;  // after the table, shared by all files
constexpr int Repeats = 5;

struct Table
{
    std::uint32_t records = 0;

    std::uint64_t DataStart() const
    {
        const std::uint64_t end = TableStart + std::uint64_t{records} * NtfsImage::RecordSize;
        return (end + BlockBytes - 1) / BlockBytes * BlockBytes;
    }
    std::uint64_t SizeBytes() const { return DataStart() + BlockBytes; }
};

// Folders in chains of six; of the files every other one resident, the rest pictures whose head is looked at.
ByteVector RecordOf(std::uint32_t number, const Table& table)
{
    const std::uint32_t folder = number / FolderEvery * FolderEvery;
    const auto text = std::to_string(number);
    const std::u16string name(text.begin(), text.end());
    if (number < FirstFile) {
        return ByteVector(NtfsImage::RecordSize);
    }
    if (number == folder) {
        const bool atTop = number / FolderEvery % FolderLevels == 0 || number < 3 * FolderEvery;
        return NtfsImage::MakeRecord(
            number, 3, {FileNameAttribute(atTop ? 5 : number - FolderEvery, u"folder" + name)});
    }
    const std::uint32_t parent = folder < FirstFile ? 5 : folder;
    if (number % 2 == 0) {
        return NtfsImage::MakeRecord(
            number, 0,
            {FileNameAttribute(parent, name + u".txt"), ResidentAttribute(0x80, Bytes("'text'"))});
    }
    const auto sector =
        static_cast<std::int64_t>(table.DataStart() / NtfsImage::SectorSize + number % DataSectors);
    return NtfsImage::MakeRecord(
        number, 0,
        {FileNameAttribute(parent, name + u".jpg"), RunsAttribute(0x80, {{1, sector}}, 500)});
}

void FillBlock(ByteVector& block, std::uint64_t position, const Table& table)
{
    if (position >= table.DataStart()) {
        block = RandomBytes(block.size(), position);
        return;
    }
    std::fill(block.begin(), block.end(), std::uint8_t{0});
    if (position == 0) {
        const NtfsImage small(NtfsImage::MftCluster + 2 * FirstFile, FirstFile);
        std::copy(small.Bytes().begin(), small.Bytes().end(), block.begin());
        const ByteVector record = NtfsImage::MakeRecord(
            0, 1,
            {RunsAttribute(0x80, {{std::uint64_t{table.records} * 2, NtfsImage::MftCluster}}, 0)});
        std::copy(record.begin(), record.end(), block.begin() + static_cast<long>(TableStart));
    }
    for (std::uint64_t at = 0; at < block.size(); at += NtfsImage::RecordSize) {
        if (position + at < TableStart + std::uint64_t{FirstFile} * NtfsImage::RecordSize) {
            continue;
        }
        const auto number =
            static_cast<std::uint32_t>((position + at - TableStart) / NtfsImage::RecordSize);
        if (number < table.records) {
            const ByteVector record = RecordOf(number, table);
            std::copy(record.begin(), record.end(), block.begin() + static_cast<long>(at));
        }
    }
}

void FastNtfsScan(benchmark::State& state)
{
    Table table;
    table.records = static_cast<std::uint32_t>(state.range(0)) * FolderEvery / (FolderEvery - 1);
    const BenchImage image(table.SizeBytes(), [&](ByteVector& block, std::uint64_t position) {
        FillBlock(block, position, table);
    });
    std::uint64_t found = 0;
    CompareWithReading(state, image, [&] {
        const DataFolder data;
        CFastNtfsRecovery engine(OpenLog());
        if (engine.OpenImageFile(image.Path(), 0) != ResultSuccess ||
            engine.Scan(nullptr) != ResultSuccess) {
            throw std::runtime_error("cannot scan the table of a benchmark");
        }
        found = engine.GetRecordCount();
    });
    state.counters["records"] = static_cast<double>(found);
}

// A volume of 1 GiB whose table is a small part of it, the rest noise, through a deep scan.
void DeepNtfsVolume(benchmark::State& state)
{
    constexpr std::uint64_t VolumeBytes = std::uint64_t{1024} * 1024 * 1024;
    Table table;
    table.records = static_cast<std::uint32_t>(state.range(0));
    const BenchImage image(VolumeBytes, [&](ByteVector& block, std::uint64_t position) {
        FillBlock(block, position, table);
    });
    std::uint64_t found = 0;
    CompareWithReading(state, image, [&] {
        const DataFolder data;
        const auto engine = RecoveryEngineFactory(OpenLog()).MakeEngineForImage(image.Path(), 1001,
                                                                                ScanDepth::Deep);
        if (engine == nullptr || engine->Scan(nullptr) != ResultSuccess) {
            throw std::runtime_error("cannot scan the volume of a benchmark");
        }
        found = engine->GetRecordCount();
    });
    state.counters["records"] = static_cast<double>(found);
}

BENCHMARK(DeepNtfsVolume)
    ->Arg(20000)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(FastNtfsScan)
    ->Arg(2000)
    ->Arg(20000)
    ->Arg(200000)
    ->UseManualTime()
    ->Iterations(Repeats)
    ->Unit(benchmark::kMillisecond);

}  // namespace
