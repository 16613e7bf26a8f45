#include "session/ScanSession.h"

#include "platform/Folders.h"
#include "recovery/Heartbeat.h"
#include "recovery/ResumableScan.h"
#include "recovery/RowSearch.h"
#include "recovery/ScanLogEntry.h"
#include "recovery/engines/EngineMaker.h"
#include "session/DoubleRows.h"
#include "session/Guard.h"
#include "session/TargetResolver.h"

#include <algorithm>
#include <array>

namespace {

// Store names begin with these, by engine kind.
constexpr std::array<std::string_view, 5> StorePrefixes = {"Fast_", "Fast_", "Pro_Ntfs_",
                                                           "Pro_Fat_", "File_Type_"};

// What stands behind the context of a callback with one percentage.
struct PercentCall
{
    const ProgressFunction& progress;
    bool stopped = false;

    bool GoesOn(std::int32_t percent)
    {
        Progress shown;
        shown.percent = percent;
        if (progress && progress(shown) != Answer::GoOn) {
            stopped = true;
        }
        return !stopped;
    }
};

ResultCode OnSearch(void* context, std::int32_t percent, std::int32_t /*reserved*/)
{
    return static_cast<PercentCall*>(context)->GoesOn(percent) ? ResultSuccess : ResultCancelled;
}

// The engine goes on with what is returned: an error that is not given back counts as overcome.
ResultCode OnPreview(void* context, std::int32_t percent, ResultCode error)
{
    return static_cast<PercentCall*>(context)->GoesOn(percent) ? error : ResultCancelled;
}

ResultCode OnFile(void* context,
                  std::int32_t percent,
                  std::int32_t range,
                  ResultCode error,
                  const std::filesystem::path& path)
{
    const auto& progress = *static_cast<const FileProgressFunction*>(context);
    const bool stops =
        progress && progress(WholePercent(percent, range), error, path) != Answer::GoOn;
    return stops ? ResultCancelled : error;  // as above
}

}  // namespace

// Declared in the order in which they are needed: the engine goes first, the lock last.
struct ScanSession::Parts
{
    std::shared_ptr<ScanHistory> history;
    std::shared_ptr<const HistoryLock> lock;
    ScanTarget target;
    ScanDepth depth = ScanDepth::Deep;
    std::unique_ptr<IFileRecoveryParse> engine;
    IResumableScan* resumable = nullptr;  // the engine, where it is one
    std::array<std::string, StorePrefixes.size()> storeNames;

    std::optional<EarlierScan> earlier;
    std::uint64_t filesBefore = 0;  // of the earlier scan that was resumed

    std::filesystem::path Folder() const
    {
        const auto* const keeper = dynamic_cast<const IKeepsRecords*>(engine.get());
        return keeper != nullptr ? keeper->LogFolder() : std::filesystem::path();
    }
    // The folder is not forgotten while its scan is open here.
    void UseFolder() const { history->SetInUse(this, Folder()); }
    void FindStoreNames();
    void TellLosses(ScanOutcome& outcome) const;
};

namespace {

struct ScanCall
{
    const ProgressFunction& progress;
    const IFileRecoveryParse& engine;
    const std::function<void()> onFirst;  // once, when the scan's folder is known
    bool begun = false;
};

ResultCode OnScan(void* context,
                  std::int32_t progress,
                  std::int32_t range,
                  std::int32_t secondsLeft,
                  std::uint64_t doneSectors,
                  std::uint64_t totalSectors,
                  std::uint64_t filesFound,
                  std::uint32_t /*reserved*/)
{
    auto& call = *static_cast<ScanCall*>(context);
    if (!call.begun) {
        call.begun = true;
        call.onFirst();
    }
    Progress shown;
    shown.percent = WholePercent(progress, range);
    shown.range = range;
    shown.secondsLeft = secondsLeft;
    shown.done = doneSectors;
    shown.total = totalSectors;
    shown.found = totalSectors != 0 ? filesFound : call.engine.GetRecordCount();
    if (const auto* const keeper = dynamic_cast<const IKeepsRecords*>(&call.engine)) {
        shown.unreadable = keeper->UnreadSectors();
    }
    switch (call.progress ? call.progress(shown) : Answer::GoOn) {
    case Answer::Stop:
        return ResultCancelled;
    case Answer::StopAtOnce:
        return ResultStoppedAtOnce;
    case Answer::GoOn:
        break;
    }
    return ResultSuccess;
}

}  // namespace

void ScanSession::Parts::TellLosses(ScanOutcome& outcome) const
{
    outcome.canGoOn = resumable != nullptr && resumable->StandsInLog();
    outcome.quickFault = resumable != nullptr ? resumable->QuickFault() : ResultSuccess;
    if (const auto* const keeper = dynamic_cast<const IKeepsRecords*>(engine.get())) {
        const LostRecords lost = keeper->Lost();
        const SectorRanges unread = keeper->Unread();
        outcome.lostRecords = lost.records;
        outcome.whyLost = lost.why;
        outcome.unreadSectors = unread.Sectors();
        outcome.unreadPlaces = unread.Places();
    }
}

void ScanSession::Parts::FindStoreNames()
{
    std::vector<std::string> names;
    (void)ListFolder(Folder(), names);  // a folder that is gone has no stores
    for (const std::string& name : names) {
        if (name.ends_with("_Relation") || name.ends_with("_DirInfo")) {
            continue;
        }
        for (std::size_t kind = 0; kind < StorePrefixes.size(); ++kind) {
            if (name.starts_with(StorePrefixes[kind])) {
                storeNames[kind] = name;
            }
        }
    }
}

OpenOutcome ScanSession::Open(std::shared_ptr<ScanHistory> history,
                              IEngineMaker& engines,
                              const ScanTarget& target,
                              ScanDepth depth)
{
    OpenOutcome outcome;
    outcome.lock = history->Lock();
    if (outcome.lock.end != LockEnd::Taken) {
        outcome.end = OpenEnd::NotLocked;
        return outcome;
    }
    ResultCode why = ResultSuccess;
    const ResultCode fault = RunGuarded([&] {
        auto parts = std::make_unique<Parts>();
        parts->history = std::move(history);
        parts->lock = outcome.lock.lock;
        parts->target = target;
        parts->depth = depth;
        parts->engine = engines.Make({target.imagePath, target.diskNumber, target.startSector,
                                      target.sectorCount, target.letter},
                                     depth, parts->history->Log(), &why);
        if (parts->engine != nullptr) {
            parts->resumable = dynamic_cast<IResumableScan*>(parts->engine.get());
            outcome.session = std::shared_ptr<ScanSession>(new ScanSession(std::move(parts)));
        }
    });
    if (outcome.session == nullptr) {
        outcome.end = OpenEnd::Refused;
        outcome.lock.lock.reset();
        outcome.refusal = WhyNotOpened({}, fault != ResultSuccess ? fault : why);
        if (fault == ResultOutOfMemory) {
            outcome.refusal.fault = TargetFault::OutOfMemory;
        }
    }
    return outcome;
}

ScanSession::ScanSession(std::unique_ptr<Parts> parts) : m_parts(std::move(parts))
{
    Parts& known = *m_parts;
    if (known.resumable != nullptr && known.resumable->HasResumableScan()) {
        const ScanLogEntry& entry = known.resumable->ResumableScan();
        known.earlier = known.history->Describe(entry);
        known.history->SetInUse(&known, LogFolderOf(entry));
    }
}

ScanSession::~ScanSession()
{
    m_parts->history->SetInUse(m_parts.get(), {});
}

const ScanTarget& ScanSession::Target() const
{
    return m_parts->target;
}

const std::optional<EarlierScan>& ScanSession::Earlier() const
{
    return m_parts->earlier;
}

std::function<std::string(std::size_t)> ScanSession::Strip() const
{
    const auto* const keeper = dynamic_cast<const IKeepsRecords*>(m_parts->engine.get());
    std::shared_ptr<const ScanMarks> marks = keeper != nullptr ? keeper->Marks() : nullptr;
    if (marks == nullptr) {
        return {};
    }
    return [marks = std::move(marks)](std::size_t cells) { return marks->Letters(cells); };
}

ScanOutcome ScanSession::Scan(EarlierChoice choice, const ProgressFunction& progress)
{
    Parts& parts = *m_parts;
    ScanOutcome outcome;
    ResultCode result = ResultSuccess;
    const ResultCode fault = RunGuarded([&] {
        if (choice == EarlierChoice::Drop && parts.earlier) {
            parts.resumable->DiscardResumableScan();
        }
        if (choice == EarlierChoice::ReadAgain && parts.earlier) {
            parts.resumable->ReadUnreadAgain();
        }
        parts.filesBefore =
            parts.earlier && choice != EarlierChoice::Drop ? parts.earlier->files : 0;
        parts.earlier.reset();
        ScanCall call{progress, *parts.engine, [&parts] { parts.UseFolder(); }};
        parts.engine->SetCallbacks(&OnScan, nullptr, &call, 100);
        result = parts.engine->Scan(nullptr);
    });
    parts.engine->SetCallbacks(nullptr, nullptr, nullptr, 100);
    (void)RunGuarded([&parts] {  // without them rows are good all the same
        parts.UseFolder();
        parts.FindStoreNames();
    });
    outcome.found = parts.engine->GetRecordCount();
    (void)RunGuarded([&] { parts.TellLosses(outcome); });
    outcome.why = fault != ResultSuccess ? fault : result;
    if (fault != ResultSuccess) {
        outcome.end = ScanEnd::Broken;
    } else if (IsStop(result)) {
        outcome.end = result == ResultCancelled ? ScanEnd::Stopped : ScanEnd::StoppedAtOnce;
    } else if (result == ResultNotConnected) {
        outcome.end = ScanEnd::Interrupted;
    } else if (result != ResultSuccess) {
        outcome.end = outcome.found == 0 ? ScanEnd::Failed : ScanEnd::Incomplete;
    }
    return outcome;
}

std::uint64_t ScanSession::RecordCount() const
{
    // A reopened store counts from 0.
    return m_parts->engine->GetRecordCount() + m_parts->filesBefore;
}

namespace {

// An engine that does not tell the places of its records has them in the order of their numbers.
FoundRowList RowsOf(IFileRecoveryParse& engine, std::string_view pattern)
{
    FoundRowList rows;
    if (auto* const search = dynamic_cast<IRowSearch*>(&engine)) {
        (void)search->SearchRows(pattern, rows);  // 0: nothing was found
        return rows;
    }
    FileRecordList records;
    (void)engine.SearchRecords(pattern, records);  // as above
    for (const FileRecord& record : records) {
        rows.push_back({record, {record.EngineKind, record.RecordNumber}, {}});
    }
    return rows;
}

}  // namespace

template <class Accept>
SearchOutcome ScanSession::SearchWhere(std::string_view pattern,
                                       const ProgressFunction& progress,
                                       const Accept& accept)
{
    SearchOutcome outcome;
    PercentCall call{progress};
    outcome.fault = RunGuarded([&] {
        if (progress) {
            m_parts->engine->SetSearchCallback(&OnSearch, &call);
        }
        outcome.rows = RowsOf(*m_parts->engine, pattern);
        std::erase_if(outcome.rows, [&accept](const FoundRow& row) { return !accept(row.record); });
        // Those of an earlier scan carry what the target was known by then.
        for (FoundRow& row : outcome.rows) {
            row.record.DriveLetter = m_parts->target.letter;
        }
        if (auto* const places = dynamic_cast<ITellsDataPlaces*>(m_parts->engine.get())) {
            Heartbeat heartbeat;
            MarkDoubles(outcome.rows, *places, [&call, &heartbeat] {
                return !call.stopped && (!heartbeat.IsDue() || call.GoesOn(100));
            });
        }
    });
    if (progress) {
        m_parts->engine->SetSearchCallback(nullptr, nullptr);
    }
    outcome.stopped = call.stopped;
    return outcome;
}

SearchOutcome ScanSession::Search(const TypeFilter& filter, const ProgressFunction& progress)
{
    return SearchWhere(filter.SearchPattern(), progress,
                       [&filter](const FileRecord& record) { return filter.Accepts(record); });
}

SearchOutcome ScanSession::Search(std::string_view pattern, const ProgressFunction& progress)
{
    return SearchWhere(pattern, progress, [](const FileRecord& /*record*/) { return true; });
}

std::string ScanSession::FolderPath(const FileRecord& record) const
{
    std::string path;
    (void)RunGuarded([&] {
        return m_parts->engine->GetRecordPath(
            &record, path);  // a chain that breaks gives what was found of it
    });
    return path;
}

const std::string& ScanSession::StoreName(std::uint32_t store) const
{
    static const std::string unknown;
    return store < m_parts->storeNames.size() ? m_parts->storeNames[store] : unknown;
}

ResultCode ScanSession::Restore(const FileRecord& record,
                                const std::filesystem::path& path,
                                std::uint32_t baseDepth,
                                const FileProgressFunction& progress)
{
    FileProgressFunction call = progress;
    const ResultCode result = RunGuarded([&] {
        m_parts->engine->SetCallbacks(nullptr, &OnFile, &call, 100);
        return m_parts->engine->RestoreRecord(&record, path, baseDepth);
    });
    m_parts->engine->SetCallbacks(nullptr, nullptr, nullptr, 100);
    return result;
}

PreviewOutcome ScanSession::ReadBytes(const FileRecord& record,
                                      std::uint32_t mostBytes,
                                      const ProgressFunction& progress)
{
    FileRecord unnamed = record;
    unnamed.SetName("");  // whether it goes to a file is told by its extension alone
    return Preview(unnamed, mostBytes, progress);
}

PreviewOutcome ScanSession::Preview(const FileRecord& record,
                                    std::uint32_t mostBytes,
                                    const ProgressFunction& progress)
{
    PreviewOutcome outcome;
    PercentCall call{progress};
    outcome.why = RunGuarded([&] {
        outcome.bytes.resize(mostBytes);
        std::uint32_t size = mostBytes;
        const ResultCode result = m_parts->engine->ReadRecordData(
            &record, outcome.file, outcome.bytes.data(), size, &OnPreview, &call);
        outcome.bytes.resize(std::min(size, mostBytes));
        return result;
    });
    if (outcome.why != ResultSuccess) {
        outcome.file.clear();
        outcome.bytes.clear();
    }
    outcome.stopped = call.stopped;
    return outcome;
}
