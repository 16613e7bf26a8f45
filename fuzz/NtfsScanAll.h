// What a user can do with one NTFS image, within bounds: scan, free ranges, listing, search, restore and preview.
#pragma once

#include "fuzz/ScratchImage.h"
#include "recovery/ntfs/FastNtfsRecovery.h"

#include <algorithm>
#include <cstdlib>

// Cancels a work that goes on and on.
struct StepLimit
{
    std::uint32_t steps = 0;

    ResultCode Step() { return ++steps > 64 ? ResultCancelled : ResultSuccess; }
};

inline void WalkFreeRanges(CFastNtfsRecovery& engine)
{
    if (engine.BuildUsedClusterMap() != ResultSuccess) {
        return;
    }
    std::uint64_t sector = 0;
    std::uint64_t length = 0;
    while (engine.NextFreeRange(sector, length) != 0 && length != 0) {
        const std::uint64_t next = sector + length;
        if (next <= sector) {
            std::abort();
        }
        sector = next;
    }
}

inline void ScanAll(const ByteVector& image)
{
    const ScratchImage scratch(image.data(), image.size());
    CFastNtfsRecovery engine(OpenLog());
    if (engine.OpenImageFile(ScratchImage::Path(), u'F') != ResultSuccess) {
        return;
    }
    StepLimit limit;
    (void)engine.SetCallbacks(
        [](void* context, auto, auto, auto, auto, auto, auto, auto) -> ResultCode {
            return static_cast<StepLimit*>(context)->Step();
        },
        [](void* context, auto, auto, auto, const auto&) -> ResultCode {
            return static_cast<StepLimit*>(context)->Step();
        },
        &limit, 100);
    (void)engine.Scan(nullptr);  // whatever it says, what was found can be used
    WalkFreeRanges(engine);
    FileRecordList records;
    std::uint32_t count = 0;
    (void)engine.CountChildren(nullptr, 0, count);
    (void)engine.ListChildren(nullptr, 0, records);
    (void)engine.SearchRecords(AllFilesPattern, records);
    for (std::size_t i = 0; i < std::min<std::size_t>(records.size(), 24); ++i) {
        const FileRecord& record = records[i];
        std::string path;
        (void)engine.GetRecordPath(&record, path);
        limit.steps = 0;
        (void)engine.RestoreRecord(&record, ScratchImage::Folder() / "out/file", 2);
        std::filesystem::path temp;
        std::uint8_t buffer[1024] = {};
        std::uint32_t size = sizeof buffer;
        limit.steps = 0;
        (void)engine.ReadRecordData(
            &record, temp, buffer, size,
            [](void* context, std::int32_t, ResultCode) -> ResultCode {
                return static_cast<StepLimit*>(context)->Step();
            },
            &limit);
        if (size > sizeof buffer) {
            std::abort();
        }
    }
}
