// The pipeline of CProfessionalRecovery::Scan: the quick engine, the stores, one pass over the ranges, the analysers'
// ends, and the saved position.
#include "platform/FileTime.h"
#include "recovery/Heartbeat.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/deep/BlockReader.h"
#include "recovery/deep/ProfessionalRecovery.h"
#include "recovery/deep/SectorClassifier.h"

#include <algorithm>

namespace {

constexpr std::int32_t FastRange = 9;
constexpr std::int32_t PassRange = 90;
constexpr std::uint64_t EstimateInterval = 5000;  // milliseconds

// A range from the log can run past its target by what lies before a FAT volume's data, not by more: one that
// does is damaged, and would be walked for ages.
constexpr std::uint64_t LargestOverrun = std::uint64_t{1} << 32;

bool IsPlausible(const ScanLogEntry& entry, std::uint64_t sectorCount)
{
    const std::uint64_t limit = sectorCount + LargestOverrun;
    return entry.rangeStart <= limit && entry.rangeLength <= limit && entry.position <= limit;
}

}  // namespace

ResultCode CProfessionalRecovery::Scan(const std::string* /*logName*/)
{
    m_saved = false;
    if (m_resumeValid && !IsPlausible(m_resumeEntry, m_target.sectorCount)) {
        DiscardResumableScan();
    }
    const bool isResume = m_resumeValid;
    m_logFolder = isResume ? LogFolderOf(m_resumeEntry) : m_log->BeginNewLog();
    HandDownLogFolder();
    TakeUnread(isResume);
    Pass pass;
    if (isResume && !FindCheckpoint()) {
        pass.at = {m_resumeEntry.rangeStart, m_resumeEntry.rangeLength, m_resumeEntry.position,
                   m_resumeEntry.sectorsDone, m_resumeEntry.filesFound};
        pass.filesBase = m_resumeEntry.filesFound;
    }
    ResultCode result = RunFastPhase(isResume, pass);
    const bool reachedPass = result == ResultSuccess;
    if (reachedPass) {
        result = RunDeepPhase(isResume, pass);
    }
    if (result == ResultSuccess && m_scanSource->IsGone()) {
        result =
            ResultNotConnected;  // at the very end, where only measuring or the analyses still read
    }
    CarveContext::Instance().TsRangeList.SetOnAdded({});
    m_journal.reset();
    m_resumeValid = false;
    if (result == ResultStoppedAtOnce) {
        return result;
    }
    m_fat.FlushStore();
    m_ntfs.FlushStore();
    m_carver.FlushStore();
    if (reachedPass || isResume) {
        SaveEnd(pass, result);
    } else {
        m_log->UndoLogNumber(m_logFolder);
    }
    return result;
}

ResultCode CProfessionalRecovery::RunDeepPhase(bool isResume, Pass& pass)
{
    if (m_checkpoint != nullptr) {
        OpenStoresCut(*m_checkpoint);
        if (const ResultCode result = Replay(pass)) {
            return ResultStoppedAtOnce;  // the checkpoint stands as it was
        }
    } else {
        OpenStores(isResume);
        BeginJournal(0);
    }
    if (!isResume) {
        FindFirstRange(pass);
    } else {
        const std::uint64_t unit = m_scanSource->SectorSize();
        m_scanSource->Marks()->NoteRead(m_target.startLba * unit,
                                        (pass.at.rangeStart + pass.at.position) * unit);
    }
    ResultCode result = RunPass(pass);
    // Also after a cancel: what was found gets its place.
    if (result != ResultStoppedAtOnce && FinishAnalyses(pass) == ResultStoppedAtOnce) {
        result = ResultStoppedAtOnce;
    }
    if (result == ResultSuccess && m_scanCallback != nullptr) {
        (void)m_scanCallback(m_callbackContext, 100, 100, 0, 0, 0, 0,
                             0);  // too late to cancel anything
    }
    return result;
}

void CProfessionalRecovery::HandDownLogFolder()
{
    m_fat.SetLogFolder(m_logFolder);
    m_ntfs.SetLogFolder(m_logFolder);
    m_carver.SetLogFolder(m_logFolder);
    if (auto* const quick = dynamic_cast<CStoreEngine*>(m_fast.get())) {
        quick->SetLogFolder(m_logFolder);
    }
}

// The callback hears the pass's last figures again: there are no others.
ResultCode CProfessionalRecovery::FinishAnalyses(const Pass& pass)
{
    Heartbeat heartbeat;
    const WorkReport report = [&]() -> ResultCode {
        // A cancel has ended the pass, or comes when there is nothing left to cancel.
        return heartbeat.IsDue() && ReportPass(pass) == ResultStoppedAtOnce ? ResultStoppedAtOnce
                                                                            : ResultSuccess;
    };
    if (const ResultCode result = m_fat.FinishAnalysis(report)) {
        return result;
    }
    return m_ntfs.FinishAnalysis(report);  // folders that cannot be read are missing from paths
}

std::string CProfessionalRecovery::StoredName(std::string_view prefix) const
{
    std::string name;
    (void)ScanLogDirectory::FindLogFile(m_logFolder, prefix,
                                        name);  // a folder that is gone gives no name
    return name;
}

// Over all sectors what the quick engine found until it failed stands beside what the pass finds.
ResultCode CProfessionalRecovery::RunFastPhase(bool isResume, Pass& pass)
{
    const ResultCode result = m_fast != nullptr ? RunFast(isResume, pass) : ResultSuccess;
    m_quickFault = IsStop(result) ? ResultSuccess : result;
    return m_passOver == PassOver::AllSectors && !IsStop(result) ? ResultSuccess : result;
}

ResultCode CProfessionalRecovery::RunFast(bool isResume, Pass& pass)
{
    m_fast->SetCallbacks(m_scanCallback, nullptr, m_callbackContext, FastRange);
    if (!m_again.Empty()) {
        const std::string known = StoredName("Fast_");
        return known.empty() ? ResultSuccess : m_fast->Scan(&known);
    }
    // An engine that answers 0 to everything has no map.
    std::uint64_t sector = 0;
    std::uint64_t length = 0;
    const ResultCode built = m_fast->BuildUsedClusterMap();
    if (IsStop(built)) {
        return built;
    }
    pass.haveFreeMap = m_passOver == PassOver::FreeSectors && built == ResultSuccess &&
                       m_fast->NextFreeRange(sector, length) != 0;
    if (!isResume) {
        return m_fast->Scan(nullptr);
    }
    const std::string name = StoredName("Fast_");
    const ResultCode result = m_fast->Scan(&name);
    return name.empty() ? ResultSuccess
                        : result;  // a store that has gone does not end the resumed scan
}

void CProfessionalRecovery::OpenStores(bool isResume)
{
    // A store that cannot be opened loses its records; the others go on.
    if (isResume) {
        (void)m_carver.ReopenStore(StoredName("File_Type_"), m_driveLetter, m_scanSource,
                                   m_sectorSize);
    } else {
        (void)m_carver.Open(m_scanSource, m_driveLetter);
    }
    (void)m_fat.OpenRecordStore(isResume ? StoredName("Pro_Fat_") : "");
    (void)m_ntfs.OpenRecordStore(isResume ? StoredName("Pro_Ntfs_") : "");
    PreparePass();
}

// As a killed or stopped scan left them at its checkpoint. The quick engine's store was whole before the pass began.
void CProfessionalRecovery::OpenStoresCut(const Checkpoint& checkpoint)
{
    (void)m_carver.ReopenStoreCut(StoredName("File_Type_"), m_driveLetter, m_scanSource,
                                  m_sectorSize, checkpoint.state.carvedRecords);
    (void)m_fat.OpenEmptiedStore(StoredName("Pro_Fat_"));
    (void)m_ntfs.OpenEmptiedStore(StoredName("Pro_Ntfs_"));
    PreparePass();
}

void CProfessionalRecovery::PreparePass()
{
    (void)m_fat.PrepareVolume();  // without a boot sector volumes come from directories alone
    // As a process that scans nothing else finds it.
    CarveContext& carve = CarveContext::Instance();
    carve.TsRangeList.Clear();
    carve.freeStretch.Clear();
    carve.TsRunHead = 1;
    carve.InsideMts = 0;
    SetSearchCallback(m_searchCallback, m_searchContext);
}

bool CProfessionalRecovery::NextRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    outLength = 0;
    (void)m_fast->NextFreeRange(inOutSector, outLength);  // asked only when it has a map
    return outLength != 0;
}

void CProfessionalRecovery::FindFirstRange(Pass& pass)
{
    if (!pass.haveFreeMap) {
        pass.at.rangeLength = m_target.sectorCount;
        return;
    }
    (void)NextRange(pass.at.rangeStart, pass.at.rangeLength);  // none: nothing to walk
}

ResultCode CProfessionalRecovery::RunPass(Pass& pass)
{
    if (pass.haveFreeMap) {
        std::uint64_t length = 0;
        for (std::uint64_t sector = 0; NextRange(sector, length); sector += length) {
            pass.sectorsTotal += length;
        }
    } else {
        pass.sectorsTotal = m_target.sectorCount;
    }
    pass.startTick = TickMilliseconds();
    pass.lastTick = pass.startTick;
    pass.checkpointTick = pass.startTick;
    pass.boundary = BoundaryOf(pass);
    BlockReader reader(m_source, m_aheadSource, m_sectorSize);
    if (m_checkpoint != nullptr) {
        reader.Hold(m_checkpoint->block);
    }
    const ResultCode result = m_again.Empty() ? RunRanges(pass, reader) : RunAgain(pass, reader);
    if (result == ResultSuccess) {
        pass.boundary = BoundaryOf(pass);
    }
    if (result != ResultStoppedAtOnce) {
        SaveCheckpoint(pass, reader);
    }
    return result;
}

// The ranges that could not be read, one after the other; the scan stays a complete one.
ResultCode CProfessionalRecovery::RunAgain(Pass& pass, BlockReader& reader)
{
    const ScanPosition end = pass.at;
    pass.sectorsTotal = m_again.Sectors();
    pass.at.sectorsDone = 0;
    ResultCode result = ResultSuccess;
    for (const auto& [first, behind] : m_again.Ends()) {
        const std::uint64_t lastSector = m_target.startLba + m_target.sectorCount;
        if (first < m_target.startLba || first >= lastSector) {
            continue;
        }
        if (result != ResultSuccess) {
            m_scanSource->NoteUnread(first * m_scanSource->SectorSize(),
                                     (behind - first) * m_scanSource->SectorSize(),
                                     ResultReadFault);  // still to be read
            continue;
        }
        pass.at.rangeStart = first - m_target.startLba;
        pass.at.rangeLength = std::min(behind, lastSector) - first;
        pass.at.position = 0;
        result = RunRange(pass, reader);
    }
    const std::uint64_t found = pass.at.filesFound;
    pass.at = end;
    pass.at.filesFound = found;
    return result;
}

ResultCode CProfessionalRecovery::RunRanges(Pass& pass, BlockReader& reader)
{
    ResultCode result = ResultSuccess;
    // The position is that of a resume in the first range, and 0 in all others.
    while (pass.at.rangeLength != 0) {
        result = RunRange(pass, reader);
        if (result != ResultSuccess) {
            break;
        }
        if (!pass.haveFreeMap) {
            pass.at.rangeLength = 0;
            break;
        }
        pass.at.rangeStart += pass.at.rangeLength;
        if (NextRange(pass.at.rangeStart, pass.at.rangeLength)) {
            pass.at.position = 0;
        }
    }
    return result;
}

ResultCode CProfessionalRecovery::RunRange(Pass& pass, BlockReader& reader)
{
    auto remaining = static_cast<std::int64_t>(pass.at.rangeLength - pass.at.position);
    while (remaining > 0) {
        const std::int64_t before = remaining;
        if (const ResultCode result = RunBlock(pass, reader, remaining)) {
            return result;
        }
        if (remaining == before) {
            break;  // a block that cannot be read after a cancel that was taken back would come again for ever
        }
        if (TickMilliseconds() - pass.checkpointTick >= m_checkpointInterval) {
            SaveCheckpoint(pass, reader);
            pass.checkpointTick = TickMilliseconds();
        }
    }
    return ResultSuccess;
}

// Reads a block and has its sectors classed. False when nothing of it could be read.
bool CProfessionalRecovery::ClassAt(
    Pass& pass, BlockReader& reader, std::uint64_t lba, std::int64_t sectors, bool& outIsCut)
{
    const Analysers analysers = {m_fat, m_ntfs, m_carver, m_source, m_sectorSize, m_journal.get()};
    const std::uint64_t rangeEnd = m_target.startLba + pass.at.rangeStart + pass.at.rangeLength;
    std::int32_t got = 0;
    const std::span<std::uint8_t> block =
        reader.Read(lba, static_cast<std::uint64_t>(sectors), rangeEnd, &got);
    if (got == 0) {
        return false;
    }
    const CarveProgress progress = {pass.at.sectorsDone, pass.sectorsTotal, pass.secondsLeft,
                                    pass.at.filesFound};
    auto filesFound = static_cast<std::int64_t>(pass.at.filesFound);
    if (m_journal != nullptr) {
        m_journal->BeginBlock(block, lba);
    }
    // A cancel comes back as the skip, and again from the callback after the block.
    outIsCut =
        ClassifyBlock(analysers, block, lba, progress, pass.skip, filesFound) == ResultCancelled;
    pass.at.filesFound = static_cast<std::uint64_t>(filesFound);
    return true;
}

ResultCode CProfessionalRecovery::RunBlock(Pass& pass, BlockReader& reader, std::int64_t& remaining)
{
    const auto blockSectors = static_cast<std::int64_t>(BlockReader::BlockBytes) / m_sectorSize;
    const std::uint64_t base = pass.at.rangeStart + m_target.startLba;
    const std::int64_t chunk = std::min(blockSectors, remaining);
    const std::uint64_t lba = base + pass.at.position;
    bool isCut = false;
    if (m_scanSource->IsGone()) {
        return ResultNotConnected;
    }
    if (CarveContext::Instance().freeStretch.CountFrom(lba) >= static_cast<std::uint64_t>(chunk) &&
        reader.LeaveOut(lba, static_cast<std::uint64_t>(chunk))) {
        CarveContext::Instance().PassOverSectors();
        pass.skip = 0;
    } else if (!ClassAt(pass, reader, lba, chunk, isCut) && chunk + pass.skip == 0) {
        return ResultSuccess;
    }
    if (m_scanSource->IsGone()) {
        // What the block brought may be wrong: it is read again as a whole when the source is back.
        if (m_journal != nullptr) {
            m_journal->EndBlock(false);
        }
        return ResultNotConnected;
    }
    // After a block that could not be read, the skip of the block before counts again: what a scan passes over depends on it.
    const std::int64_t moved = chunk + pass.skip;
    pass.at.position += static_cast<std::uint64_t>(moved);
    pass.at.sectorsDone += static_cast<std::uint64_t>(std::min(moved, remaining));
    remaining -= moved;
    const ResultCode result = ReportBlock(pass);
    // A block that was left in its middle is read again as a whole when the scan is resumed.
    const bool counts = result == ResultSuccess || !isCut;
    if (m_journal != nullptr) {
        m_journal->EndBlock(counts);
    }
    if (counts) {
        pass.boundary = BoundaryOf(pass);
    }
    return result;
}

ResultCode CProfessionalRecovery::ReportBlock(Pass& pass)
{
    const std::uint64_t now = TickMilliseconds();
    const std::uint64_t done = pass.at.sectorsDone;
    if (now - pass.lastTick >= EstimateInterval) {
        const auto unit = static_cast<std::uint64_t>(m_sectorSize);
        const std::uint64_t elapsed = std::max<std::uint64_t>((now - pass.startTick) / 1000, 1);
        const std::uint64_t rate = std::max<std::uint64_t>(done * unit / elapsed, 1);
        const std::uint64_t left = pass.sectorsTotal > done ? pass.sectorsTotal - done : 0;
        pass.secondsLeft =
            static_cast<std::int32_t>(std::min<std::uint64_t>(left * unit / rate, INT32_MAX));
        pass.lastTick = now;
    }
    if (m_scanCallback == nullptr) {
        return ResultSuccess;
    }
    pass.at.filesFound = GetRecordCount() + pass.filesBase;
    return ReportPass(pass);
}

ResultCode CProfessionalRecovery::ReportPass(const Pass& pass) const
{
    if (m_scanCallback == nullptr) {
        return ResultSuccess;
    }
    const std::uint64_t done = pass.at.sectorsDone;
    const std::uint64_t percent = pass.sectorsTotal != 0 ? done * 100 / pass.sectorsTotal : 0;
    return m_scanCallback(m_callbackContext, static_cast<std::int32_t>(percent + 10), PassRange,
                          pass.secondsLeft, done, pass.sectorsTotal, pass.at.filesFound, 0);
}
