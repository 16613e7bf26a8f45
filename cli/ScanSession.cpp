#include "cli/ScanSession.h"

#include "cli/TextForms.h"
#include "platform/Folders.h"
#include "platform/SourceOverlap.h"
#include "recovery/RecoveryEngineFactory.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/deep/ProfessionalRecovery.h"
#include "storage/ByteReader.h"
#include "storage/DriveRegistry.h"

#include <algorithm>
#include <ostream>

namespace {

ScanDepth DepthOf(const CommandOptions& options)
{
    if (options.fast) {
        return ScanDepth::Quick;
    }
    return options.whole ? ScanDepth::Whole : ScanDepth::Deep;
}

constexpr char16_t ImageId = 1001;
constexpr char16_t DeviceLetter = 1;

// Store names begin with these, by engine kind.
constexpr std::array<std::string_view, 5> StorePrefixes = {"Fast_", "Fast_", "Pro_Ntfs_",
                                                           "Pro_Fat_", "File_Type_"};

Refusal TargetRefusal(const std::string& sentence)
{
    return {ExitStatus::TargetFailed, sentence};
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
    const std::filesystem::path folder = ScanLogDirectory::Instance().Root().parent_path();
    if (FolderLiesOnSource(folder, m_options.target)) {
        Note("Warning: scan records are written to " + Printable(folder.string()) +
             ", which lies on the source itself and may overwrite deleted files; --data-dir DIR on "
             "another disk avoids that.");
    }
    return std::nullopt;
}

Refusal ScanSession::WhyNotOpened(ResultCode why) const
{
    const std::string name = Printable(m_options.target);
    switch (why) {
    case ResultFileNotFound:
    case ResultPathNotFound:
        return TargetRefusal(
            name + ": there is no such file or device; give the path of an image file or of a "
                   "block device such as /dev/sdb1.");
    case ResultAccessDenied:
        return TargetRefusal(
            name + ": you are not permitted to read it; run the command with the rights to read "
                   "the device, for example with sudo.");
    case ResultShortRead:
        return TargetRefusal(
            name + ": it is shorter than 16 KB, so it holds no volume; check that the image was "
                   "copied whole.");
    case ResultSuccess:
        return TargetRefusal(
            name + ": no file system that can be scanned was found at its start; give a single "
                   "partition (such as /dev/sdb1) in place of a whole disk, or an image of one.");
    default:
        return TargetRefusal(
            name + ": it cannot be read: " + ErrorText(why) +
            " Check the cable and the medium, or copy what can be read to an image and scan that.");
    }
}

std::optional<Refusal> ScanSession::OpenDevice(const FileHandle& device)
{
    std::uint64_t sizeBytes = 0;
    if (const ResultCode result = device.Size(&sizeBytes)) {
        return WhyNotOpened(result);
    }
    if (std::optional<Refusal> refusal = UseScanLog()) {
        return refusal;
    }
    std::error_code ignored;
    const std::filesystem::path path = std::filesystem::canonical(m_options.target, ignored);
    const std::uint32_t number = DriveRegistry::Instance().NumberOf(path);
    const std::uint32_t sectorSize = std::max(device.DeviceSectorSize(), 512u);
    ResultCode why = ResultSuccess;
    m_engine = RecoveryEngineFactory::Instance().MakeEngineForPartition(
        number, 0, sizeBytes / sectorSize, DeviceLetter, DepthOf(m_options), &why);
    return m_engine != nullptr ? std::nullopt : std::optional(WhyNotOpened(why));
}

std::optional<Refusal> ScanSession::OpenTarget()
{
    if (m_options.target.starts_with('#')) {
        return Refusal{
            ExitStatus::WrongUse,
            "targets have no numbers yet; give the path of an image file or of a block device."};
    }
    FileHandle file;
    if (const ResultCode result = file.OpenForReading(m_options.target)) {
        return WhyNotOpened(result);
    }
    if (file.IsBlockDevice()) {
        return OpenDevice(file);
    }
    if (!file.IsRegularFile()) {
        return TargetRefusal(
            Printable(m_options.target) +
            ": it is neither a file nor a block device; give an image file or a device.");
    }
    return OpenImage();
}

std::optional<Refusal> ScanSession::OpenImage()
{
    if (std::optional<Refusal> refusal = UseScanLog()) {
        return refusal;
    }
    // An earlier scan is found again by the image's path, wherever it was started from.
    std::error_code ignored;
    const std::filesystem::path path = std::filesystem::canonical(m_options.target, ignored);
    ResultCode why = ResultSuccess;
    m_engine = RecoveryEngineFactory::Instance().MakeEngineForImage(path, ImageId,
                                                                    DepthOf(m_options), &why);
    return m_engine != nullptr ? std::nullopt : std::optional(WhyNotOpened(why));
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
    if (m_options.fast) {
        // The name of a store holds the minute only: two scans must not share a folder.
        ScanLogDirectory::Instance().BeginNewLog();
    } else {
        ChooseEarlierScan();
    }
    m_engine->SetCallbacks(&OnScanProgress, nullptr, this, 100);
    const ResultCode result = m_engine->Scan(nullptr);
    m_engine->SetCallbacks(nullptr, nullptr, nullptr, 100);
    m_line.Clear();
    FindStoreNames();
    m_cancelled = result == ResultCancelled;
    if (m_cancelled) {
        Note(m_options.fast ? "Cancelled; what was found until then is kept."
                            : "Cancelled; what was found until then is kept, and --resume goes on "
                              "from there.");
    } else if (result != ResultSuccess && m_engine->GetRecordCount() == 0) {
        return TargetRefusal(
            Printable(m_options.target) + ": it could not be scanned: " + ErrorText(result) +
            " Check the medium, or copy what can be read to an image and scan that.");
    } else if (result != ResultSuccess) {
        Note("Warning: the scan met a fault and may be incomplete: " + ErrorText(result));
    }
    return std::nullopt;
}

// An earlier scan of the target that stands in the log: gone on with, or dropped.
void ScanSession::ChooseEarlierScan()
{
    auto* deep = dynamic_cast<CProfessionalRecovery*>(m_engine.get());
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
    m_streams.err << "An earlier scan of this target stands in the log (" << scan
                  << "). Go on with it? [Y/n] " << std::flush;
    std::string answer;
    std::getline(*m_streams.answers, answer);
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
        shown.found = totalSectors != 0 ? filesFound : session.m_engine->GetRecordCount();
        session.m_line.Show(ProgressText(shown));
    }
    return ResultSuccess;
}

FileRecordList ScanSession::Search(const TypeFilter& filter)
{
    FileRecordList records;
    (void)m_engine->SearchRecords(filter.SearchPattern(), records);  // 0: nothing was found
    std::erase_if(records, [&filter](const FileRecord& record) { return !filter.Accepts(record); });
    return records;
}

std::string ScanSession::FolderPath(const FileRecord& record)
{
    std::string path;
    (void)m_engine->GetRecordPath(&record, path);  // a chain that breaks gives what was found of it
    return path;
}

void ScanSession::FindStoreNames()
{
    const auto* deep = dynamic_cast<CProfessionalRecovery*>(m_engine.get());
    const std::filesystem::path folder =
        deep != nullptr ? deep->LogFolder() : ScanLogDirectory::Instance().CurrentLogPath();
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
