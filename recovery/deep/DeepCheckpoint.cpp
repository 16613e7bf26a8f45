// How CProfessionalRecovery keeps how far a scan is, and goes on with one that was stopped or killed: its end is that of a
// scan that nothing disturbed, byte for byte.
#include "recovery/UnreadFile.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/deep/BlockReader.h"
#include "recovery/deep/ProfessionalRecovery.h"

namespace {

bool IsOfTarget(const ScanLogEntry& entry, const ScanLogEntry& other)
{
    return entry.diskNumber == other.diskNumber && entry.startLba == other.startLba &&
           entry.sectorCount == other.sectorCount && ImagePathOf(entry) == ImagePathOf(other) &&
           LogFolderOf(entry) == LogFolderOf(other);
}

}  // namespace

// A scan that the log calls complete needs none, and one of an earlier version has none.
bool CProfessionalRecovery::FindCheckpoint()
{
    auto checkpoint = std::make_unique<Checkpoint>();
    if (!ReadCheckpoint(m_logFolder, *checkpoint) ||
        !IsOfTarget(checkpoint->state.entry, m_resumeEntry)) {
        return false;
    }
    const std::vector<ScanLogEntry> saved = m_log->Entries();
    for (const ScanLogEntry& entry : saved) {
        if (IsOfTarget(entry, m_resumeEntry) && entry.rangeLength == 0) {
            return false;
        }
    }
    m_checkpoint = std::move(checkpoint);
    m_ownEntry = m_checkpoint->state.entry;
    m_saved = true;  // also when it is stopped again before the next checkpoint
    return true;
}

// What an earlier part of the scan could not read counts on, unless it is read now.
void CProfessionalRecovery::TakeUnread(bool isResume)
{
    const SectorRanges before = isResume ? ReadUnread(m_logFolder) : SectorRanges();
    if (m_againUnread && m_resumeEntry.rangeLength == 0) {
        m_again = before;
    } else {
        m_scanSource->NoteUnread(before);
    }
    m_againUnread = false;
}

// Without a file for it, or an entry that can name the target, the scan goes on and cannot be resumed exactly.
void CProfessionalRecovery::BeginJournal(std::uint64_t keepBytes)
{
    const bool known =
        m_checkpoint != nullptr || (!m_resumeValid && m_again.Empty() &&
                                    m_log->MakeEntry(*m_scanSource, m_logFolder, m_ownEntry));
    m_journal = known ? std::make_unique<ScanJournal>() : nullptr;
    if (m_journal != nullptr && m_journal->Open(m_logFolder, keepBytes) != ResultSuccess) {
        m_journal = nullptr;
    }
    if (m_journal != nullptr) {
        CarveContext::Instance().TsRangeList.SetOnAdded(
            [journal = m_journal.get()](std::uint64_t firstLba, std::uint64_t lastLba) {
                journal->AddTransportStream(firstLba, lastLba);
            });
    }
}

// Shows the analysers what they had seen, and puts everything else back as it was.
ResultCode CProfessionalRecovery::Replay(Pass& pass)
{
    const CheckpointState state = m_checkpoint->state;
    pass.at = {state.entry.rangeStart, state.entry.rangeLength, state.entry.position,
               state.entry.sectorsDone, state.entry.filesFound};
    pass.filesBase = state.filesBase;
    pass.skip = state.skip;
    Heartbeat heartbeat;
    const Analysers analysers = {m_fat, m_ntfs, m_carver, m_source, m_sectorSize};
    const ResultCode result =
        ReplayJournal(m_logFolder, state.journalBytes, analysers, [&]() -> ResultCode {
            return heartbeat.IsDue() ? ReportPass(pass) : ResultSuccess;
        });
    if (result != ResultSuccess) {
        return result;
    }
    CarveContext& carve = CarveContext::Instance();
    carve.TsRunHead = state.tsRunHead;
    carve.InsideMts = state.insideMts;
    BeginJournal(state.journalBytes);
    return ResultSuccess;
}

CheckpointState CProfessionalRecovery::BoundaryOf(const Pass& pass) const
{
    const CarveContext& carve = CarveContext::Instance();
    CheckpointState state;
    state.entry.rangeStart = pass.at.rangeStart;
    state.entry.rangeLength = pass.at.rangeLength;
    state.entry.position = pass.at.position;
    state.entry.sectorsDone = pass.at.sectorsDone;
    state.entry.filesFound = pass.at.filesFound;
    state.skip = pass.skip;
    state.filesBase = pass.filesBase;
    state.journalBytes = m_journal != nullptr ? m_journal->Bytes() : 0;
    state.carvedRecords = static_cast<std::uint32_t>(m_carver.GetRecordCount());
    state.tsRunHead = carve.TsRunHead;
    state.insideMts = carve.InsideMts;
    return state;
}

// In this order: what the checkpoint counts on is on the disk before it. After a fault the last one stands.
void CProfessionalRecovery::SaveCheckpoint(const Pass& pass, BlockReader& reader)
{
    if (m_journal == nullptr || Lost().why != ResultSuccess) {
        return;
    }
    auto* const quick = dynamic_cast<CStoreEngine*>(m_fast.get());
    if (m_carver.SyncRecords() != ResultSuccess || m_journal->Write() != ResultSuccess ||
        (!m_saved && quick != nullptr && quick->SyncRecords() != ResultSuccess)) {
        return;
    }
    Checkpoint checkpoint;
    checkpoint.state = pass.boundary;
    const ScanLogEntry at = checkpoint.state.entry;
    checkpoint.state.entry = m_ownEntry;
    checkpoint.state.entry.rangeStart = at.rangeStart;
    checkpoint.state.entry.rangeLength = at.rangeLength;
    checkpoint.state.entry.position = at.position;
    checkpoint.state.entry.sectorsDone = at.sectorsDone;
    checkpoint.state.entry.filesFound = at.filesFound;
    if (quick != nullptr && m_checkpoint == nullptr) {
        checkpoint.state.filesBase = quick->GetRecordCount();  // a reopened store counts from 0
    }
    const std::span<const std::uint8_t> held = reader.Held();
    checkpoint.block.assign(held.begin(), held.end());
    (void)WriteUnread(m_logFolder, Unread());  // without it the scan passes for one that read all
    if (WriteCheckpoint(m_logFolder, checkpoint) == ResultSuccess) {
        m_saved = true;
        DropEarlier();
    }
}

// The scan that the user did not want to go on with: what takes its place is safe now.
void CProfessionalRecovery::DropEarlier()
{
    if (!m_dropped.empty()) {
        (void)m_log->DeleteLog(m_dropped);  // what stays is not listed any more
        (void)m_log->Save();
        m_dropped.clear();
    }
}

// A scan that lost records, or its source, is not complete: its last checkpoint stands, from which it is resumed.
void CProfessionalRecovery::SaveEnd(const Pass& pass, ResultCode result)
{
    m_again = {};
    if (Lost().why != ResultSuccess || m_scanSource->IsGone()) {
        return;
    }
    (void)WriteUnread(m_logFolder, Unread());  // as above
    DropEarlier();
    // The scan is as good without a way back to it.
    m_saved = m_log->SaveProgress(m_target, pass.at, m_logFolder) == ResultSuccess || m_saved;
    if (result == ResultSuccess) {
        RemoveCheckpoint(m_logFolder);
    }
}
