// What list and recover write about each file, as JSON.
#pragma once

#include "cli/ScanRun.h"
#include "recovery/FoundRow.h"
#include "session/RestoreFiles.h"

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <string_view>

struct ReportedFile
{
    const FoundRow& row;
    std::string folderPath;                // each folder followed by "\"
    std::string store;                     // name of the record file
    std::filesystem::path restoredTo;      // empty when nothing was written
    std::string error;                     // empty when there was none
    const FileOutcome* outcome = nullptr;  // null when it was not to be restored
    std::uint32_t part = 0;                // that it was found in; 0 when the target is one piece
    std::string doubleStore;  // where the row stands that shows the same file; empty when none does
};

// Of a file, and of what became of it.
ReportedFile ReportOf(const FoundRow& row, const ScanRun& run);
ReportedFile ReportOf(const FoundRow& row, const ScanRun& run, const FileOutcome& outcome);

// "fast-ntfs", "fast-fat", "deep-ntfs", "deep-fat", "carved".
std::string_view EngineName(std::uint32_t engineKind);

// Writes one object, file by file, so that a million files need no memory. Finish ends it.
class JsonReport
{
public:
    JsonReport(std::ostream& out, std::string_view target);
    void Add(const ReportedFile& file);
    // What stands at the end is about the scan as a whole, and about each part.
    void Finish(const ScanRun& run, const RestoreOutcome* outcome = nullptr);

private:
    std::ostream& m_out;
    std::uint64_t m_found = 0;
};
