// How far a scan is, in a file of its own in the scan's log folder, from which a scan that was stopped or killed is resumed
// exactly. Its name begins with a full stop, so listings of stores pass it over. See docs/formats.md.
#pragma once

#include "platform/ResultCode.h"
#include "recovery/ScanLogEntry.h"

#include <cstdint>
#include <filesystem>
#include <vector>

#pragma pack(push, 1)
// The fixed part of the file, after its mark.
struct CheckpointState
{
    ScanLogEntry entry;               // the target and the position
    std::int64_t skip = 0;            // sectors, of the block that was classed last
    std::uint64_t filesBase = 0;      // files that no store of this process counts
    std::uint64_t journalBytes = 0;   // of the journal count
    std::uint32_t carvedRecords = 0;  // of the carver's store count
    std::int32_t tsRunHead = 1;       // the carver's two flags
    std::int32_t insideMts = 0;
};
#pragma pack(pop)

struct Checkpoint
{
    CheckpointState state;
    // What the pass's buffer held: a block that can be read in part keeps the rest of it.
    std::vector<std::uint8_t> block;
};

inline constexpr const char* CheckpointName = ".checkpoint";
inline constexpr const char* JournalName = ".journal";

// Replaces the checkpoint of a log folder: either the old or the new one stands there, also after a power cut.
[[nodiscard]] ResultCode WriteCheckpoint(const std::filesystem::path& logFolder,
                                         const Checkpoint& checkpoint);
// False for one that is not there or not whole.
bool ReadCheckpoint(const std::filesystem::path& logFolder, Checkpoint& outCheckpoint);
// Removes it and its journal; a complete scan needs none.
void RemoveCheckpoint(const std::filesystem::path& logFolder);
