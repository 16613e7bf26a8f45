#include "session/RestoreFiles.h"

#include "platform/Folders.h"
#include "platform/OpenFiles.h"
#include "platform/Ownership.h"
#include "recovery/CopyScope.h"
#include "recovery/RestoreSupport.h"
#include "session/EarlierFiles.h"
#include "session/Guard.h"
#include "session/PartFile.h"

#include <algorithm>

namespace {

FileEnd EndOf(ResultCode why, const FileOutcome& outcome)
{
    if (why == ResultSuccess) {
        return outcome.Missing() == 0 ? FileEnd::Restored : FileEnd::Incomplete;
    }
    return why == ResultCancelled ? FileEnd::Cancelled : FileEnd::Failed;
}

ScanSession* FindSource(std::span<const std::shared_ptr<ScanSession>> sources,
                        const FileRecord& record)
{
    const auto found = std::find_if(sources.begin(), sources.end(), [&record](const auto& source) {
        return source->Target().letter == record.DriveLetter;
    });
    return found != sources.end() ? found->get() : nullptr;
}

std::uint64_t SizeOfFile(const std::filesystem::path& path)
{
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

// The first byte past what can be read.
std::uint64_t EndOf(const ScanTarget& target)
{
    return target.IsImage() ? SizeOfFile(target.imagePath)
                            : target.StartByte() + target.ByteCount();
}

// Of files known by their content alone, which lie in one piece.
bool ClaimsTooMuch(const ScanTarget& target, const FileRecord& record)
{
    const std::uint64_t end = EndOf(target);
    const std::uint64_t first = record.EntrySector * target.sectorSize;
    return record.EngineKind == EngineKindCarved && end != 0 && first < end &&
           record.FileSize > end - first;
}

class Restoring
{
public:
    Restoring(std::span<const std::shared_ptr<ScanSession>> sources,
              std::size_t total,
              Destination& destination,
              const RestoreCalls& calls,
              const RestoreOptions& options)
        : m_sources(sources.begin(), sources.end()),
          m_destination(destination),
          m_calls(calls),
          m_options(options),
          m_earlier(destination.Rules() == NameRules::Windows)
    {
        m_progress.total = total;
    }

    void Take(const FoundRow& row);
    RestoreOutcome Outcome() const { return m_outcome; }

private:
    void Count(const FileOutcome& outcome);
    FileOutcome TakeFile(ScanSession* source, const FoundRow& row);
    ResultCode Copy(ScanSession& source,
                    const FileRecord& record,
                    const std::filesystem::path& part,
                    FileOutcome& outcome);
    void Finish(const std::filesystem::path& part,
                const std::filesystem::path& wanted,
                FileOutcome& outcome);
    bool GoesOn();

    std::vector<std::shared_ptr<ScanSession>> m_sources;  // copies: they stay as long as this runs
    Destination& m_destination;
    const RestoreCalls& m_calls;
    const RestoreOptions& m_options;
    EarlierFiles m_earlier;
    RestoreProgress m_progress;
    RestoreOutcome m_outcome;
};

bool Restoring::GoesOn()
{
    if (!m_outcome.stopped && m_calls.onProgress &&
        m_calls.onProgress(m_progress) != Answer::GoOn) {
        m_outcome.stopped = true;
    }
    return !m_outcome.stopped;
}

void Restoring::Take(const FoundRow& row)
{
    ScanSession* const source = FindSource(m_sources, row.record);
    ++m_progress.number;
    m_progress.percent = 0;
    m_progress.error = ResultSuccess;
    m_progress.path.clear();
    FileOutcome outcome;
    outcome.size = row.record.FileSize;
    if (!m_outcome.full && GoesOn()) {
        outcome = TakeFile(source, row);
    }
    Count(outcome);
    if (m_calls.onFile) {
        m_calls.onFile(source, row, outcome);
    }
}

void Restoring::Count(const FileOutcome& outcome)
{
    switch (outcome.end) {
    case FileEnd::Restored:
        (outcome.wasThere ? m_outcome.wereThere : m_outcome.restored) += 1;
        break;
    case FileEnd::Incomplete:
        ++m_outcome.incomplete;
        break;
    case FileEnd::Failed:
    case FileEnd::Cancelled:
        ++m_outcome.failed;
        break;
    case FileEnd::NotTried:
        ++m_outcome.notTried;
        break;
    }
    m_outcome.full = m_outcome.full || (m_options.stopsWhenFull && outcome.why == ResultDiskFull);
}

FileOutcome Restoring::TakeFile(ScanSession* source, const FoundRow& row)
{
    FileOutcome outcome;
    outcome.size = row.record.FileSize;
    std::filesystem::path wanted;
    std::filesystem::path part;
    outcome.why = RunGuarded([&] {
        if (source == nullptr) {
            return ResultNotConnected;
        }
        const std::string folders =
            m_destination.KeepsTree() ? source->FolderPath(row.record) : std::string();
        wanted = m_destination.WantedPath(row.record, folders);
        outcome.path = m_destination.FreePath(wanted);
        part = PartFileIn(wanted.parent_path());
        return Copy(*source, row.record, part, outcome);
    });
    const ResultCode fault = RunGuarded([&] {
        if (!part.empty()) {
            Finish(part, wanted, outcome);
        }
    });
    outcome.why = fault != ResultSuccess ? fault : outcome.why;
    outcome.end = EndOf(outcome.why, outcome);
    outcome.claimsTooMuch =
        outcome.Missing() != 0 && source != nullptr && ClaimsTooMuch(source->Target(), row.record);
    return outcome;
}

ResultCode Restoring::Copy(ScanSession& source,
                           const FileRecord& record,
                           const std::filesystem::path& part,
                           FileOutcome& outcome)
{
    const CopyScope scope(m_options.fillsUnreadable);
    const FileProgressFunction onProgress = [this,
                                             &outcome](std::int32_t percent, ResultCode error,
                                                       const std::filesystem::path& /*part*/) {
        m_progress.percent = percent;
        m_progress.error = error;
        m_progress.path = outcome.path;
        return GoesOn() ? Answer::GoOn : Answer::Stop;
    };
    ResultCode result = ResultGeneralFailure;
    const std::function<void()> work = [&] {
        result = source.Restore(record, part, CountSeparators(m_destination.Folder()), onProgress);
    };
    if (!m_calls.guard) {
        work();
    } else if (!m_calls.guard(work)) {
        // The engine had no chance to close it; a run with many faults would come to the end of all descriptors.
        CloseFilesOf(part);
        outcome.faulted = true;
    }
    const std::uint64_t there = std::min(SizeOfFile(part), outcome.size);
    outcome.came = there - std::min(there, scope.FilledBytes());
    return result;
}

// Gives the file its name, where anything came of it.
void Restoring::Finish(const std::filesystem::path& part,
                       const std::filesystem::path& wanted,
                       FileOutcome& outcome)
{
    if (!PathExists(part)) {
        return;
    }
    if (outcome.came == 0 && (outcome.size != 0 || outcome.why != ResultSuccess) &&
        !IsRealFolder(part)) {
        (void)RemoveFile(part);  // a part that stays is the next run's to remove
        return;
    }
    const std::filesystem::path earlier =
        m_options.skipsEqual ? m_earlier.TakeEqual(wanted, part) : std::filesystem::path();
    if (!earlier.empty()) {
        (void)RemoveFile(part);  // as above
        outcome.path = earlier;
        outcome.wasThere = true;
        outcome.written = true;
        return;
    }
    HandToUser(part);
    const ResultCode placed = m_destination.Place(part, wanted, outcome.path);
    if (placed != ResultSuccess) {
        (void)RemoveFile(part);  // as above
        outcome.why = placed;
        outcome.came = 0;
        return;
    }
    if (m_options.skipsEqual) {
        m_earlier.Add(outcome.path);
    }
    outcome.written = true;
}

}  // namespace

namespace {

// foldersOf gives what stands above a record.
template <class FoldersOf>
DestinationRoom RoomForFiles(std::span<const FoundRow> rows,
                             const Destination& destination,
                             const RestoreOptions& options,
                             const FoldersOf& foldersOf)
{
    DestinationRoom room;
    room.freeBytes = destination.FreeBytes().value_or(UINT64_MAX);
    for (const FoundRow& row : rows) {
        const std::uint64_t size = row.record.FileSize;
        room.neededBytes += std::min(size, UINT64_MAX - room.neededBytes);
    }
    if (room.IsEnough() || !options.skipsEqual) {
        return room;
    }
    for (const FoundRow& row : rows) {
        const std::string folders = destination.KeepsTree() ? foldersOf(row.record) : std::string();
        if (destination.HasAlready(row.record, folders)) {
            const std::uint64_t size = row.record.FileSize;
            room.neededBytes -= std::min(size, room.neededBytes);
        }
    }
    return room;
}

}  // namespace

DestinationRoom RoomFor(std::span<const FoundRow> rows,
                        const ScanSession& source,
                        const Destination& destination,
                        const RestoreOptions& options)
{
    return RoomForFiles(rows, destination, options,
                        [&source](const FileRecord& record) { return source.FolderPath(record); });
}

DestinationRoom RoomFor(std::span<const FoundRow> rows,
                        std::span<const std::shared_ptr<ScanSession>> sources,
                        const Destination& destination,
                        const RestoreOptions& options)
{
    return RoomForFiles(rows, destination, options, [sources](const FileRecord& record) {
        const ScanSession* const source = FindSource(sources, record);
        return source != nullptr ? source->FolderPath(record) : std::string();
    });
}

RestoreOutcome RestoreFiles(std::span<const std::shared_ptr<ScanSession>> sources,
                            std::span<const FoundRow> rows,
                            Destination& destination,
                            const RestoreCalls& calls,
                            const RestoreOptions& options)
{
    RestoreOutcome outcome;
    const ResultCode fault = RunGuarded([&] {
        Restoring restoring(sources, rows.size(), destination, calls, options);
        for (const FoundRow& row : rows) {
            restoring.Take(row);
            outcome = restoring.Outcome();
        }
    });
    outcome.fault = fault;
    return outcome;
}
