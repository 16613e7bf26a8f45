#include "cli/ScanSession.h"

#include "cli/TextForms.h"
#include "platform/Folders.h"
#include "platform/SourceOverlap.h"
#include "recovery/RecoveryEngineFactory.h"
#include "recovery/ScanLogDirectory.h"
#include "storage/ByteReader.h"
#include "storage/DriveRegistry.h"

#include <algorithm>
#include <ostream>

namespace {

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

// Two scans at once would take the same log folder from each other.
std::optional<Refusal> ScanSession::LockDataFolder()
{
    const std::filesystem::path folder = ScanLogDirectory::Instance().Root().parent_path();
    const std::string name = Printable(folder.string());
    const ResultCode made = MakePrivateFolderWithParents(folder);
    if (!FolderIsThere(made)) {
        return Refusal{ExitStatus::WrongUse, "the folder for scan records, " + name +
                                                 ", cannot be made: " + ErrorText(made) +
                                                 " Give another one with --data-dir."};
    }
    if (const ResultCode opened = m_lock.OpenOrCreate(folder / "in-use.lock")) {
        return Refusal{ExitStatus::WrongUse, "the folder for scan records, " + name +
                                                 ", cannot be written: " + ErrorText(opened) +
                                                 " Give another one with --data-dir."};
    }
    if (!m_lock.TryLock()) {
        return Refusal{ExitStatus::WrongUse,
                       "another scan uses " + name +
                           "; wait for its end, or give this one a folder of its "
                           "own with --data-dir."};
    }
    if (FolderLiesOnSource(folder, m_options.target)) {
        Note("Warning: scan records are written to " + name +
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
    std::error_code ignored;
    const std::filesystem::path path = std::filesystem::canonical(m_options.target, ignored);
    const std::uint32_t number = DriveRegistry::Instance().NumberOf(path);
    const std::uint32_t sectorSize = std::max(device.DeviceSectorSize(), 512u);
    ResultCode why = ResultSuccess;
    m_engine = RecoveryEngineFactory::Instance().MakeEngineForPartition(
        number, 0, sizeBytes / sectorSize, DeviceLetter, false, &why);
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
    ResultCode why = ResultSuccess;
    m_engine = RecoveryEngineFactory::Instance().MakeEngineForImage(m_options.target, ImageId,
                                                                    false, &why);
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
    if (std::optional<Refusal> refusal = LockDataFolder()) {
        return refusal;
    }
    // The name of a store holds the minute only: two scans must not share a folder.
    ScanLogDirectory::Instance().BeginNewLog();
    m_engine->SetCallbacks(&OnScanProgress, nullptr, this, 100);
    const ResultCode result = m_engine->Scan(nullptr);
    m_engine->SetCallbacks(nullptr, nullptr, nullptr, 100);
    m_line.Clear();
    FindStoreNames();
    m_cancelled = result == ResultCancelled;
    if (m_cancelled) {
        Note("Cancelled; what was found until then is kept.");
    } else if (result != ResultSuccess && m_engine->GetRecordCount() == 0) {
        return TargetRefusal(
            Printable(m_options.target) + ": it could not be scanned: " + ErrorText(result) +
            " Check the medium, or copy what can be read to an image and scan that.");
    } else if (result != ResultSuccess) {
        Note("Warning: the scan met a fault and may be incomplete: " + ErrorText(result));
    }
    return std::nullopt;
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
    std::vector<std::string> names;
    (void)ListFolder(ScanLogDirectory::Instance().CurrentLogPath(), names);
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
