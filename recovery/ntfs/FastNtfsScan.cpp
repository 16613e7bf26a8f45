// The scan of CFastNtfsRecovery: the table record by record, then the folders above what was found.
#include "platform/FileTime.h"
#include "recovery/FileTypeCatalogue.h"
#include "recovery/carving/CarveDriver.h"
#include "recovery/ntfs/FastNtfsRecovery.h"

#include <algorithm>

namespace {

constexpr std::uint64_t RecordsPerChunk = 1024;
constexpr std::uint64_t EstimateInterval = 5000;  // milliseconds
constexpr std::int32_t FullRange = 100;           // a scan of its own, with an estimate of its time

}  // namespace

// Progress through the table, and how long the rest may take.
struct CFastNtfsRecovery::ScanClock
{
    std::uint64_t total = 0;  // sectors
    std::uint64_t done = 0;
    std::uint64_t begin = TickMilliseconds();
    std::uint64_t lastEstimate = begin;
    std::int32_t secondsLeft = -1;

    void Estimate(std::uint32_t bytesPerSector)
    {
        const std::uint64_t now = TickMilliseconds();
        if (now - lastEstimate < EstimateInterval) {
            return;
        }
        const std::uint64_t elapsed = (now - begin) / 1000;
        const std::uint64_t rate =
            std::max<std::uint64_t>(1, done * bytesPerSector / std::max<std::uint64_t>(1, elapsed));
        secondsLeft = static_cast<std::int32_t>((total - done) * bytesPerSector / rate);
        lastEstimate = now;
    }
};

ResultCode CFastNtfsRecovery::Scan(const std::string* logName)
{
    m_ancestors.Clear();
    if (logName != nullptr) {
        return MakeStore(*logName);
    }
    UseLogFolder();
    // The search tells that nothing was kept.
    (void)MakeStore(ScanRecordStore::MakeName("Fast_", m_volume.PartitionStart));
    const ResultCode result = ScanMft();
    FlushStore();
    return result;
}

ResultCode CFastNtfsRecovery::ScanMft()
{
    ScanClock clock;
    for (const NtfsRun& run : m_readers.MftRuns()) {
        clock.total += run.Length * m_volume.SectorsPerCluster;
    }
    std::uint64_t lba = m_volume.PartitionStart;
    for (const NtfsRun& run : m_readers.MftRuns()) {
        lba += SectorsToRun(run, m_volume.SectorsPerCluster);
        if (const ResultCode result = ScanRun(run, lba, clock)) {
            return result;
        }
    }
    ScanFolders();
    return Report(100, clock.secondsLeft);
}

ResultCode CFastNtfsRecovery::ScanRun(const NtfsRun& run, std::uint64_t lba, ScanClock& clock)
{
    const std::uint64_t chunkSectors = RecordsPerChunk * m_volume.SectorsPerRecord;
    const std::uint64_t runSectors = run.Length * m_volume.SectorsPerCluster;
    for (std::uint64_t at = 0; at < runSectors;) {
        const std::uint64_t count = std::min(chunkSectors, runSectors - at);
        if (const ResultCode result = ScanMftChunk(lba + at, count)) {
            return result;
        }
        at += count;
        clock.done += count;
        if (m_progressRange == FullRange) {
            clock.Estimate(m_volume.BytesPerSector);
        }
        const auto percent = static_cast<std::int32_t>(clock.done * 100 / clock.total);
        if (const ResultCode result = Report(percent, clock.secondsLeft)) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode CFastNtfsRecovery::ScanMftChunk(std::uint64_t firstSector, std::uint64_t sectors)
{
    m_chunkBuffer.resize(RecordsPerChunk * m_volume.RecordSize);
    std::int32_t sectorsRead = 0;
    if (const ResultCode result = m_source.ReadSectors(
            m_chunkBuffer.data(), static_cast<std::int32_t>(sectors), firstSector,
            static_cast<std::int32_t>(m_volume.BytesPerSector), &sectorsRead)) {
        return result;
    }
    const auto brought = static_cast<std::size_t>(sectorsRead);
    const auto chunk = std::span(m_chunkBuffer).first(brought * m_volume.BytesPerSector);
    for (std::size_t i = 0; i < brought / m_volume.SectorsPerRecord; ++i) {
        RecordInHand inHand;
        // A walk may stray into the records after it, which are not repaired yet, up to the end of the chunk.
        inHand.bytes = chunk.subspan(i * m_volume.RecordSize);
        inHand.sector = firstSector + i * m_volume.SectorsPerRecord;
        (void)ProcessRecord(inHand);  // garbage in a record must not end a scan
    }
    return ResultSuccess;
}

// The list may grow while it is walked; new folders are reached too.
void CFastNtfsRecovery::ScanFolders()
{
    RecordBuffer buffer;
    for (std::size_t i = 0; i < m_ancestors.FolderList.size(); ++i) {
        RecordInHand inHand;
        inHand.bytes = buffer.bytes;
        inHand.folderPass = true;
        inHand.wantedNumber = m_ancestors.FolderList[i];
        (void)m_readers.ReadFileRecord(inHand.wantedNumber, buffer);  // unreadable is lost
        (void)ProcessRecord(inHand);                                  // as above
    }
}

ResultCode CFastNtfsRecovery::ProcessRecord(const RecordInHand& inHand)
{
    const ByteView record{inHand.bytes};
    const std::uint16_t flags = FlagsOf(record);
    if (flags != 0 && !inHand.folderPass) {
        return ResultSuccess;
    }
    // The folder's old record was reused or wiped.
    const bool lost = inHand.folderPass && (flags & RecordIsFolder) == 0;
    if (!HasFileMagic(record)) {
        if (lost) {
            MakeLostFolder(*m_store, m_origin, inHand.wantedNumber, NoClusterBytes);
        }
        return ResultNoFileRecord;
    }
    (void)m_readers.Codec.ApplyFixups(inHand.bytes);  // cannot fail after the magic
    FileRecord* current = nullptr;
    AttributeWalk walk(record, BytesInUseOf(record), RecordScanRules);
    while (walk.Next()) {
        const ByteView attribute = walk.Attribute();
        if (walk.Type() == AttributeData && current != nullptr) {
            if (!attribute.Covers(AttributeNameLength, 1)) {
                break;
            }
            if (attribute.U8(AttributeNameLength) == 0 &&
                !UpdateFileSize(attribute, walk.Length(), *current)) {
                break;
            }
        }
        if (walk.Type() != AttributeFileName) {
            continue;
        }
        if (lost) {
            MakeLostFolder(*m_store, m_origin, RecordNumberOf(record), NoClusterBytes);
            break;
        }
        if (!attribute.Covers(0, FileNameHeadBytes)) {
            break;
        }
        if (!TakeFileName(inHand, attribute, current)) {
            break;
        }
    }
    return ResultSuccess;
}

// The first name makes the record, whatever its namespace; later ones can only give it a better name. False when the
// name does not lie in the buffer.
bool CFastNtfsRecovery::TakeFileName(const RecordInHand& inHand,
                                     ByteView attribute,
                                     FileRecord*& current)
{
    if (RecordNumberOf(ByteView(inHand.bytes)) < FirstUserRecordNumber ||
        (current != nullptr && !IsWin32Name(attribute))) {
        return true;
    }
    if (!HasWholeName(attribute)) {
        return false;
    }
    if (current != nullptr) {
        current->SetName(NameOfFileName(attribute));
    } else {
        current = &MakeRecord(inHand, attribute);
    }
    return true;
}

// Linked and judged at once, under the first name and before the data attribute has told the size. A folder stays
// indexed under that name.
FileRecord& CFastNtfsRecovery::MakeRecord(const RecordInHand& inHand, ByteView attribute)
{
    FileRecord& record = MakeRecordFromFileName(*m_store, m_origin, attribute, inHand.folderPass);
    record.ClusterBytes = m_volume.ClusterBytes();
    record.NodeId = RecordNumberOf(ByteView(inHand.bytes));
    // By the number inside the record, not by where it was read.
    record.EntrySector = m_readers.RecordNumberToSector(record.NodeId);
    record.PartitionStart = m_volume.PartitionStart;
    const std::uint32_t parent = ParentOfFileName(attribute);
    const std::uint32_t depth = m_ancestors.Resolve(parent);
    if (inHand.folderPass) {
        m_store->LinkFolder(parent, depth, record.RecordNumber, record.NodeId, record.NameText());
    } else {
        m_store->LinkRecord(parent, depth, record.RecordNumber);
        record.HeadIntact = CheckFileHead(record, inHand) ? 1 : 0;
    }
    return record;
}

// Whether the file's first bytes still fit its extension; what cannot be judged does.
bool CFastNtfsRecovery::CheckFileHead(const FileRecord& record, const RecordInHand& inHand)
{
    ByteView bytes;
    RecordBuffer buffer;
    ResultCode readResult = ResultSuccess;
    // What a read of the record would bring is in hand already, unless the record says that it stands elsewhere, or the
    // read would go beyond the chunk.
    if (inHand.sector == record.EntrySector && inHand.bytes.size() >= RecordReadBytes &&
        RecordReadBytes % m_volume.BytesPerSector == 0) {
        bytes = ByteView(inHand.bytes.first(RecordReadBytes));
    } else {
        readResult = m_readers.ReadRecordAt(record.EntrySector, buffer);
        bytes = buffer.View();
        if (!HasFileMagic(bytes)) {
            return true;
        }
        (void)m_readers.Codec.ApplyFixups(buffer.bytes);  // cannot fail after the magic
    }
    ByteView value;
    const ResultCode found = FindResidentData(bytes, m_volume.RecordSize, RecordReadBytes, value);
    if (found == ResultSuccess) {
        std::string extension;
        return !value.Empty() &&
               (ExtensionOf(record.NameText(), extension) != ResultSuccess ||
                VerifyExtensionAtSector(value, extension, m_source,
                                        static_cast<std::int32_t>(m_volume.BytesPerSector),
                                        record.EntrySector));
    }
    RunList runs;
    if (found != ResultDataNotResident || readResult != ResultSuccess ||
        m_readers.FindAttributeRuns(bytes, AttributeData, runs) != ResultSuccess || runs.empty()) {
        return true;
    }
    return CheckFirstSector(record, runs);
}

bool CFastNtfsRecovery::CheckFirstSector(const FileRecord& record, const RunList& runs)
{
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    const std::uint64_t lba =
        SectorOfCluster(lcn, record.ClusterBytes, m_volume.BytesPerSector) + record.PartitionStart;
    std::string extension;
    if (lba == 0 || ExtensionOf(record.NameText(), extension) != ResultSuccess) {
        return true;
    }
    const auto sectorSize = static_cast<std::int32_t>(m_volume.BytesPerSector);
    std::vector<std::uint8_t> sector(m_volume.BytesPerSector);
    std::int32_t sectorsRead = 0;
    if (m_source.ReadSectors(sector.data(), 1, lba, sectorSize, &sectorsRead) != ResultSuccess) {
        return true;
    }
    return VerifyExtensionAtSector(ByteView(sector), extension, m_source, sectorSize, lba);
}
