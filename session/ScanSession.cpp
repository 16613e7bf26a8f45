#include "session/ScanSession.h"

#include "platform/Folders.h"
#include "recovery/ResumableScan.h"
#include "recovery/ScanLogEntry.h"
#include "recovery/engines/EngineMaker.h"
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
        if (progress && progress(shown) == Answer::Stop) {
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
        progress && progress(WholePercent(percent, range), error, path) == Answer::Stop;
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
    std::filesystem::path quickFolder;  // of a quick scan's store

    const std::filesystem::path& Folder() const
    {
        return resumable != nullptr ? resumable->LogFolder() : quickFolder;
    }
    // The folder is not forgotten while its scan is open here.
    void UseFolder() const { history->SetInUse(this, Folder()); }
    void FindStoreNames();
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
    return call.progress && call.progress(shown) == Answer::Stop ? ResultCancelled : ResultSuccess;
}

}  // namespace

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
                                     depth, &why);
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

ScanOutcome ScanSession::Scan(EarlierChoice choice, const ProgressFunction& progress)
{
    Parts& parts = *m_parts;
    ScanOutcome outcome;
    ResultCode result = ResultSuccess;
    const ResultCode fault = RunGuarded([&] {
        if (parts.depth == ScanDepth::Quick) {
            // The name of a store holds the minute only: two scans must not share a folder.
            parts.quickFolder = parts.history->BeginNewLog();
        } else if (choice == EarlierChoice::Drop && parts.earlier) {
            parts.resumable->DiscardResumableScan();
        }
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
    outcome.why = fault != ResultSuccess ? fault : result;
    if (fault != ResultSuccess) {
        outcome.end = ScanEnd::Broken;
    } else if (result == ResultCancelled) {
        outcome.end = ScanEnd::Stopped;
    } else if (result != ResultSuccess) {
        outcome.end = outcome.found == 0 ? ScanEnd::Failed : ScanEnd::Incomplete;
    }
    return outcome;
}

template <class Accept>
SearchOutcome ScanSession::SearchWhere(std::string_view pattern,
                                       const ProgressFunction& progress,
                                       const Accept& accept)
{
    SearchOutcome outcome;
    PercentCall call{progress};
    outcome.fault = RunGuarded([&] {
        FileRecordList records;
        if (progress) {
            m_parts->engine->SetSearchCallback(&OnSearch, &call);
        }
        (void)m_parts->engine->SearchRecords(pattern, records);  // 0: nothing was found
        std::erase_if(records, [&accept](const FileRecord& record) { return !accept(record); });
        outcome.rows.reserve(records.size());
        for (const FileRecord& record : records) {
            // The number, which is the place but in a scan that was gone on with.
            outcome.rows.push_back({record, {record.EngineKind, record.RecordNumber}, {}});
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
