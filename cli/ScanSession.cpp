#include "cli/ScanSession.h"

#include "cli/TextForms.h"
#include "platform/Folders.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/deep/ProfessionalRecovery.h"
#include "recovery/engines/RecoveryEngineFactory.h"

#include <ostream>

namespace {

ScanDepth DepthOf(const CommandOptions& options)
{
    if (options.fast) {
        return ScanDepth::Quick;
    }
    return options.whole ? ScanDepth::Whole : ScanDepth::Deep;
}

// Store names begin with these, by engine kind.
constexpr std::array<std::string_view, 5> StorePrefixes = {"Fast_", "Fast_", "Pro_Ntfs_",
                                                           "Pro_Fat_", "File_Type_"};

// Empty for an engine that keeps no records.
std::filesystem::path LogFolderOfQuick(const IFileRecoveryParse& engine)
{
    const auto* const quick = dynamic_cast<const CStoreEngine*>(&engine);
    return quick != nullptr ? quick->LogFolder() : std::filesystem::path();
}

}  // namespace

ScanSession::ScanSession(const CommandOptions& options, CommandStreams& streams)
    : m_options(options),
      m_streams(streams),
      m_line(streams.err, streams.errIsTerminal && !options.quiet)
{
}

ScanSession::~ScanSession() = default;

void ScanSession::Note(const std::string& sentence)
{
    m_line.Clear();
    if (!m_options.quiet) {
        m_streams.err << sentence << '\n';
    }
}

// The log is read, and written, from the opening of a deep engine on.
std::optional<Refusal> ScanSession::UseScanLog()
{
    if (m_lock) {
        return std::nullopt;
    }
    m_lock.emplace();
    if (std::optional<Refusal> refusal = m_lock->Take()) {
        return refusal;
    }
    const std::filesystem::path folder = CommandLog()->Root().parent_path();
    if (PathTouchesTarget(folder, m_target) == Touching::Yes) {
        Note("Warning: scan records are written to " + Printable(folder.string()) +
             ", which lies on the source itself and may overwrite deleted files; --data-dir DIR on "
             "another disk avoids that.");
    }
    return std::nullopt;
}

std::optional<Refusal> ScanSession::OpenTarget()
{
    if (std::optional<Refusal> refusal = ResolveTarget(m_options.target, m_target)) {
        return refusal;
    }
    if (std::optional<Refusal> refusal = UseScanLog()) {
        return refusal;
    }
    const RecoveryEngineFactory factory(CommandLog());
    const ScanDepth depth = DepthOf(m_options);
    ResultCode why = ResultSuccess;
    if (m_target.IsVolume()) {
        const VolumeRecord& volume = *m_target.Volume;
        m_target.Engine =
            factory.MakeEngineForPartition(volume.DiskNumber, volume.StartSector,
                                           volume.SectorCount, m_target.Letter(), depth, &why);
    } else {
        m_target.Engine =
            factory.MakeEngineForImage(m_target.ImagePath, m_target.Letter(), depth, &why);
    }
    return m_target.Engine != nullptr ? std::nullopt
                                      : std::optional(WhyNotOpened(m_options.target, why));
}

std::optional<Refusal> ScanSession::OpenAndScan()
{
    if (std::optional<Refusal> refusal = OpenTarget()) {
        return refusal;
    }
    return Scan();
}

std::optional<Refusal> ScanSession::Scan()
{
    if (!m_options.fast) {
        ChooseEarlierScan();
    }
    m_target.Engine->SetCallbacks(&OnScanProgress, nullptr, this, 100);
    const ResultCode result = m_target.Engine->Scan(nullptr);
    m_target.Engine->SetCallbacks(nullptr, nullptr, nullptr, 100);
    m_line.Clear();
    FindStoreNames();
    m_cancelled = result == ResultCancelled;
    if (m_cancelled) {
        Note(m_options.fast ? "Cancelled; what was found until then is kept."
                            : "Cancelled; what was found until then is kept, and --resume goes on "
                              "from there.");
    } else if (result != ResultSuccess && m_target.Engine->GetRecordCount() == 0) {
        return Refusal{
            ExitStatus::TargetFailed,
            Printable(m_options.target) + ": it could not be scanned: " + ErrorText(result) +
                " Check the medium, or copy what can be read to an image and scan that."};
    } else if (result != ResultSuccess) {
        Note("Warning: the scan met a fault and may be incomplete: " + ErrorText(result));
    }
    return std::nullopt;
}

// An earlier scan of the target that stands in the log: gone on with, or dropped.
void ScanSession::ChooseEarlierScan()
{
    auto* deep = dynamic_cast<CProfessionalRecovery*>(m_target.Engine.get());
    if (deep == nullptr || !deep->HasResumableScan()) {
        if (m_options.resume) {
            Note("No earlier scan of this target stands in the log, or the target has changed "
                 "since; scanning anew.");
        }
        return;
    }
    const bool complete = deep->ResumableScan().rangeLength == 0;
    const std::string scan = DescribeScan(deep->ResumableScan());
    if (m_options.fresh || (!m_options.resume && !AskToResume(scan))) {
        deep->DiscardResumableScan();
    } else {
        Note(complete ? "Taking the results of an earlier scan (" + scan + "); --new scans anew."
                      : "Going on with an earlier scan (" + scan + "); --new scans anew.");
    }
}

// With nobody to ask the answer is yes.
bool ScanSession::AskToResume(const std::string& scan)
{
    if (m_streams.answers == nullptr) {
        return true;
    }
    const std::string answer = ReadAnswer("An earlier scan of this target stands in the log (" +
                                              scan + "). Go on with it? [Y/n] ",
                                          m_streams);
    return answer.empty() || (answer.front() != 'n' && answer.front() != 'N');
}

ResultCode ScanSession::OnScanProgress(void* context,
                                       std::int32_t progress,
                                       std::int32_t range,
                                       std::int32_t secondsLeft,
                                       std::uint64_t doneSectors,
                                       std::uint64_t totalSectors,
                                       std::uint64_t filesFound,
                                       std::uint32_t /*reserved*/)
{
    auto& session = *static_cast<ScanSession*>(context);
    if (CancelScope::Requested()) {
        return ResultCancelled;
    }
    if (session.m_line.IsDue()) {
        ScanProgress shown;
        shown.percent = static_cast<std::int32_t>(std::int64_t{progress} * range / 100);
        // The quick engines' own estimate is of their part alone.
        shown.secondsLeft = range >= 90 ? secondsLeft : -1;
        shown.doneSectors = doneSectors;
        shown.totalSectors = totalSectors;
        shown.found = totalSectors != 0 ? filesFound : session.m_target.Engine->GetRecordCount();
        session.m_line.Show(ProgressText(shown));
    }
    return ResultSuccess;
}

FileRecordList ScanSession::Search(const TypeFilter& filter) const
{
    FileRecordList records;
    (void)m_target.Engine->SearchRecords(filter.SearchPattern(), records);  // 0: nothing was found
    std::erase_if(records, [&filter](const FileRecord& record) { return !filter.Accepts(record); });
    return records;
}

std::string ScanSession::FolderPath(const FileRecord& record) const
{
    std::string path;
    (void)m_target.Engine->GetRecordPath(&record,
                                         path);  // a chain that breaks gives what was found of it
    return path;
}

void ScanSession::FindStoreNames()
{
    const auto* deep = dynamic_cast<CProfessionalRecovery*>(m_target.Engine.get());
    const std::filesystem::path folder =
        deep != nullptr ? deep->LogFolder() : LogFolderOfQuick(*m_target.Engine);
    std::vector<std::string> names;
    (void)ListFolder(folder, names);
    for (const std::string& name : names) {
        if (name.ends_with("_Relation") || name.ends_with("_DirInfo")) {
            continue;
        }
        for (std::size_t kind = 0; kind < StorePrefixes.size(); ++kind) {
            if (name.starts_with(StorePrefixes[kind])) {
                m_storeNames[kind] = name;
            }
        }
    }
}

const std::string& ScanSession::StoreName(const FileRecord& record) const
{
    static const std::string unknown;
    return record.EngineKind < m_storeNames.size() ? m_storeNames[record.EngineKind] : unknown;
}
