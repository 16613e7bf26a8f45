// Restores many found files: where each goes, what it says when one of them goes wrong, and what became of each.
#pragma once

#include "session/Destination.h"
#include "session/ScanSession.h"

#include <functional>
#include <memory>
#include <span>

struct RestoreProgress
{
    std::uint64_t number = 0;          // of the file, from 1
    std::uint64_t total = 0;           // files
    std::int32_t percent = 0;          // of the file
    ResultCode error = ResultSuccess;  // that the engine has met in it
    std::filesystem::path
        path;  // empty in front of each file, when it is only asked whether to go on
};

enum class FileEnd
{
    Restored,
    Failed,     // see why
    Cancelled,  // before its end
    NotTried    // the run was stopped before
};

struct FileOutcome
{
    FileEnd end = FileEnd::NotTried;
    ResultCode why = ResultSuccess;
    std::filesystem::path path;  // empty when it was not tried
    bool written = false;        // something stands there
};

struct RestoreOutcome
{
    ResultCode fault = ResultSuccess;
    std::uint64_t restored = 0;
    std::uint64_t failed = 0;
    bool stopped = false;
};

// Both are called on the thread that restores. onFile hears of each row once, in their order.
struct RestoreCalls
{
    std::function<Answer(const RestoreProgress& progress)> onProgress;
    std::function<void(ScanSession* source, const FoundRow& row, const FileOutcome& outcome)>
        onFile;
};

// A row's source is the one whose target's letter its record carries; a row without one fails. Whatever goes wrong with one file
// does not end the others.
RestoreOutcome RestoreFiles(std::span<const std::shared_ptr<ScanSession>> sources,
                            std::span<const FoundRow> rows,
                            Destination& destination,
                            const RestoreCalls& calls);
