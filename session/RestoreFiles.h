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
        path;  // empty before each of the files, when it is only asked whether to go on
};

enum class FileEnd
{
    Restored,
    Incomplete,  // the engine met no error, but not all bytes of the file came
    Failed,      // see why
    Cancelled,   // before its end
    NotTried     // the run was stopped before
};

struct FileOutcome
{
    FileEnd end = FileEnd::NotTried;
    ResultCode why = ResultSuccess;
    std::filesystem::path path;  // empty when it was not tried
    bool written = false;        // something stands there
    bool wasThere = false;   // and an earlier run has left it: the same bytes are not written again
    std::uint64_t size = 0;  // that the record tells
    std::uint64_t came = 0;  // bytes of it that were read
    bool faulted = false;    // the guard has ended its restoring
    // Its own head claims a length that goes beyond the end of the source.
    bool claimsTooMuch = false;

    std::uint64_t Missing() const { return size - came; }
    // What stands there is cut, or has holes.
    bool IsDamaged() const
    {
        return written && Missing() != 0 && (end == FileEnd::Failed || end == FileEnd::Cancelled);
    }
};

// Every file is in one of the counts.
struct RestoreOutcome
{
    ResultCode fault = ResultSuccess;
    std::uint64_t restored = 0;
    std::uint64_t wereThere = 0;  // whole, from an earlier run
    std::uint64_t incomplete = 0;
    std::uint64_t failed = 0;
    std::uint64_t notTried = 0;
    bool stopped = false;  // by the face
    bool full = false;     // the destination is, and the options end the run then
};

struct RestoreOptions
{
    bool skipsEqual = false;       // files that an earlier run has left, byte for byte the same
    bool stopsWhenFull = false;    // after the file that found no room
    bool fillsUnreadable = false;  // with zeros, in place of ending the file
};

// Both calls come on the thread that restores. onFile hears of each row once, in their order.
struct RestoreCalls
{
    std::function<Answer(const RestoreProgress& progress)> onProgress;
    std::function<void(ScanSession* source, const FoundRow& row, const FileOutcome& outcome)>
        onFile;
    // Runs what it is given; false when it had to end it by force. None: nothing is caught but exceptions.
    std::function<bool(const std::function<void()>& work)> guard = nullptr;
};

// What files need, and what there is for them.
struct DestinationRoom
{
    std::uint64_t neededBytes = 0;
    std::uint64_t freeBytes = 0;

    bool IsEnough() const { return neededBytes <= freeBytes; }
};

// By the sizes that the records tell; with skipsEqual those of files that seem to stand there already do not count. A
// destination that does not tell its room has enough.
DestinationRoom RoomFor(std::span<const FoundRow> rows,
                        const ScanSession& source,
                        const Destination& destination,
                        const RestoreOptions& options);
// The same of files of several sources, each of which is found as below.
DestinationRoom RoomFor(std::span<const FoundRow> rows,
                        std::span<const std::shared_ptr<ScanSession>> sources,
                        const Destination& destination,
                        const RestoreOptions& options);

// A row's source is the one whose target's letter its record carries; a row without one fails. Whatever goes wrong with one file
// does not end the others. Until a file is done it has a name that says so; what came of one that failed stands in the end
// under the name that it was to have, unless nothing did.
RestoreOutcome RestoreFiles(std::span<const std::shared_ptr<ScanSession>> sources,
                            std::span<const FoundRow> rows,
                            Destination& destination,
                            const RestoreCalls& calls,
                            const RestoreOptions& options = {});
