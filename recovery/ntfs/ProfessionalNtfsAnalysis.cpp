// What CProfessionalNtfsRecovery makes of a FILE record: which volume it belongs to, how large the clusters are, where its
// parents are.
#include "platform/Text.h"
#include "recovery/FileTypeCatalogue.h"
#include "recovery/FolderChain.h"
#include "recovery/carving/CarveDriver.h"
#include "recovery/ntfs/ProfessionalNtfsRecovery.h"

namespace {

constexpr AttributeRules DeepScanRules = {false, true, AttributeFill, AttributeFill};
constexpr std::size_t AttributeAllocatedSize = 40;  // not resident
constexpr std::uint32_t MftRecordNumber = 0;

}  // namespace

ResultCode CProfessionalNtfsRecovery::AddFileRecord(std::span<std::uint8_t> buffer,
                                                    std::uint64_t lba)
{
    if ((FlagsOf(ByteView(buffer)) & RecordIsFolder) != 0 || m_store == nullptr) {
        return ResultSuccess;
    }
    return ProcessRecord({buffer, lba, false, 0});
}

// The list may grow while it is walked; new folders are reached too.
ResultCode CProfessionalNtfsRecovery::FinishAnalysis(const WorkReport& report)
{
    ResultCode result = ResultSuccess;
    for (std::size_t i = 0; i < m_folderWorkList.size(); ++i) {
        if (const ResultCode answer = report()) {
            return answer;
        }
        const FolderWork work = m_folderWorkList[i];
        const std::uint64_t lba = work.table.SectorOf(work.recordNumber, m_sectorsPerRecord);
        RecordBuffer buffer;
        if (const ResultCode read = ReadRecordAt(lba, buffer)) {
            return read;  // the folders after it get no record
        }
        result = ProcessRecord({buffer.bytes, lba, true, work.recordNumber});
    }
    return result;
}

ResultCode CProfessionalNtfsRecovery::ProcessRecord(const RecordInHand& inHand)
{
    const ByteView record{inHand.bytes};
    const std::uint32_t clusterBytes = m_sectorsPerCluster * m_bytesPerSector;
    // The folder's old record was reused or wiped.
    const bool lost = inHand.folderPass && (FlagsOf(record) & RecordIsFolder) == 0;
    if (!HasFileMagic(record)) {
        if (lost) {
            MakeLostFolder(*m_store, m_origin, inHand.wantedNumber, clusterBytes);
        }
        return ResultNoFileRecord;
    }
    (void)m_codec.ApplyFixups(inHand.bytes);  // cannot fail after the magic
    const std::uint32_t used = BytesInUseOf(record);
    const std::uint32_t first = FirstAttributeOf(record);
    if (used > m_recordSize || first > m_recordSize || used < first) {
        return ResultInvalidParameter;
    }
    FileRecord* current = nullptr;
    AttributeWalk walk(record, used, DeepScanRules);
    while (walk.Next()) {
        const ByteView attribute = walk.Attribute();
        if (walk.Type() == AttributeData && current != nullptr) {
            if (!attribute.Covers(AttributeNameLength, 1) ||
                (attribute.U8(AttributeNameLength) == 0 &&
                 !UpdateFileSize(attribute, walk.Length(), *current))) {
                break;
            }
        }
        if (walk.Type() != AttributeFileName) {
            continue;
        }
        if (lost) {
            const std::uint32_t number =
                inHand.wantedNumber != 0 ? inHand.wantedNumber : RecordNumberOf(record);
            MakeLostFolder(*m_store, m_origin, number, clusterBytes);
            break;
        }
        if (!attribute.Covers(0, FileNameHeadBytes) || !TakeFileName(inHand, attribute, current)) {
            break;
        }
    }
    return ResultSuccess;
}

// The first name makes the record, whatever its namespace; later ones can only give it a better name. False when a name
// that is needed does not lie in the buffer.
bool CProfessionalNtfsRecovery::TakeFileName(const RecordInHand& inHand,
                                             ByteView attribute,
                                             FileRecord*& current)
{
    const std::uint32_t number = RecordNumberOf(ByteView(inHand.bytes));
    const bool isSystem = number < FirstUserRecordNumber;
    if ((isSystem && number != MftRecordNumber) ||
        (!isSystem && current != nullptr && !IsWin32Name(attribute))) {
        return true;
    }
    if (!HasWholeName(attribute)) {
        return false;
    }
    if (isSystem) {
        TakeSystemName(inHand, attribute);
    } else if (current != nullptr) {
        current->SetName(NameOfFileName(attribute));
    } else {
        current = &MakeRecord(inHand, attribute);
    }
    return true;
}

// Record 0 of a volume tells where its whole table lies.
void CProfessionalNtfsRecovery::TakeSystemName(const RecordInHand& inHand, ByteView attribute)
{
    if (EqualIgnoringAsciiCase(NameOfFileName(attribute), "$MFT")) {
        RunList runs;
        (void)ReadRunsAt(inHand.lba, runs);  // without runs the table is entered all the same
        m_mfts.Enter(inHand.lba, runs);
    }
}

// Linked and judged at once, under the first name and before the data attribute has told the size.
FileRecord& CProfessionalNtfsRecovery::MakeRecord(const RecordInHand& inHand, ByteView attribute)
{
    const ByteView bytes{inHand.bytes};
    FileRecord& record = MakeRecordFromFileName(*m_store, m_origin, attribute, inHand.folderPass);
    EstimateClusterSize(bytes);
    record.ClusterBytes = m_sectorsPerCluster * m_bytesPerSector;
    record.NodeId = RecordNumberOf(bytes);
    record.EntrySector = inHand.lba;
    const NtfsLostTable table = m_mfts.ResolveVolumeStart(
        inHand.lba, record.NodeId, m_sectorsPerRecord, m_sectorsPerCluster, m_startLba);
    record.PartitionStart = table.volumeStart;
    const std::uint32_t parent = ParentOfFileName(attribute);
    const std::uint32_t depth = ResolveAncestors(parent, table);
    if (inHand.folderPass) {
        m_store->LinkFolder(parent, depth, record.RecordNumber, record.NodeId, record.NameText());
    } else {
        m_store->LinkRecord(parent, depth, record.RecordNumber);
        record.HeadIntact = CheckFileHead(record) ? 1 : 0;
    }
    return record;
}

// A file's own data tells the cluster size: what it has allocated, divided by its clusters. A damaged record can set a
// strange value, and the next good file puts it right.
void CProfessionalNtfsRecovery::EstimateClusterSize(ByteView record)
{
    if (FirstAttributeOf(record) >= m_recordSize) {
        return;
    }
    std::uint64_t allocated = 0;
    RunList runs;
    AttributeWalk walk(record, m_recordSize, ResidentReaderRules);
    while (walk.Next() && walk.Type() != AttributeAttributeList) {
        if (walk.Type() == AttributeData) {
            const ByteView attribute = walk.Attribute();
            if (attribute.U8(AttributeNonResident) != 0 &&
                attribute.Covers(AttributeAllocatedSize, sizeof(std::uint64_t))) {
                allocated = attribute.U64(AttributeAllocatedSize);
                m_codec.DecodeRunList(attribute, runs);
            }
            break;
        }
    }
    std::uint64_t clusters = 0;
    for (const NtfsRun& run : runs) {
        clusters += run.Length;
    }
    if (clusters == 0) {
        return;
    }
    // Cut to 32 bits before it is tested: 2^32 is no size.
    const auto estimate = static_cast<std::uint32_t>(allocated / m_bytesPerSector / clusters);
    if (estimate != 0) {
        m_sectorsPerCluster = estimate;
    }
}

// Folders from this one up to the root, which is not counted, or up to where the chain breaks. New ones are entered in
// FolderWorkList.
std::uint32_t CProfessionalNtfsRecovery::ResolveAncestors(std::uint32_t recordNumber,
                                                          const NtfsLostTable& table)
{
    return CountLevels(recordNumber, m_depths[table.id], [&](std::uint32_t number) {
        FolderStep step;
        if (number == RootRecordNumber) {
            return step;
        }
        step.isLevel = true;
        if (m_listed.insert(number).second) {
            m_folderWorkList.push_back({number, table});
        }
        // Another number there shows that the table's runs do not fit.
        const FolderHead& head = HeadAt(table.SectorOf(number, m_sectorsPerRecord));
        step.hasParent = head.isFolder && head.number == number && head.hasParent;
        step.parent = head.parent;
        return step;
    });
}

const CProfessionalNtfsRecovery::FolderHead& CProfessionalNtfsRecovery::HeadAt(std::uint64_t lba)
{
    const auto [known, isNew] = m_heads.try_emplace(lba);
    FolderHead& head = known->second;
    RecordBuffer buffer;
    if (!isNew || ReadRepairedRecord(lba, buffer) != ResultSuccess) {
        return head;
    }
    const ByteView record = buffer.View();
    const std::uint32_t used = BytesInUseOf(record);
    const std::uint32_t first = FirstAttributeOf(record);
    if ((FlagsOf(record) & RecordIsFolder) == 0 || first >= m_recordSize || used >= m_recordSize ||
        used < first) {
        return head;
    }
    head.isFolder = true;
    head.number = RecordNumberOf(record);
    AttributeWalk walk(record, used, DeepScanRules);
    while (walk.Next()) {
        if (walk.Type() == AttributeFileName) {
            head.hasParent = walk.Attribute().Covers(24, sizeof(std::uint32_t));
            head.parent = ParentOfFileName(walk.Attribute());
            break;
        }
    }
    return head;
}

// Whether the file's first bytes still fit its extension; what cannot be judged does.
bool CProfessionalNtfsRecovery::CheckFileHead(const FileRecord& record)
{
    RecordBuffer buffer;
    if (ReadRepairedRecord(record.EntrySector, buffer) != ResultSuccess ||
        FirstAttributeOf(buffer.View()) >= m_recordSize) {
        return true;
    }
    ByteView value;
    const ResultCode found = FindResidentData(buffer.View(), m_recordSize, m_recordSize, value);
    if (found == ResultSuccess) {
        std::string extension;
        return !value.Empty() &&
               (ExtensionOf(record.NameText(), extension) != ResultSuccess ||
                VerifyExtensionAtSector(value, extension, m_source,
                                        static_cast<std::int32_t>(m_bytesPerSector),
                                        record.EntrySector));
    }
    RunList runs;
    if (found != ResultDataNotResident || ReadRunsAt(record.EntrySector, runs) != ResultSuccess ||
        runs.empty()) {
        return true;
    }
    return CheckFirstSector(record, runs);
}

bool CProfessionalNtfsRecovery::CheckFirstSector(const FileRecord& record, const RunList& runs)
{
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    const std::uint64_t lba =
        SectorOfCluster(lcn, record.ClusterBytes, m_bytesPerSector) + record.PartitionStart;
    std::string extension;
    if (lba == 0 || ExtensionOf(record.NameText(), extension) != ResultSuccess) {
        return true;
    }
    const auto sectorSize = static_cast<std::int32_t>(m_bytesPerSector);
    std::vector<std::uint8_t> sector(m_bytesPerSector);
    std::int32_t sectorsRead = 0;
    if (m_source.ReadSectors(sector.data(), 1, lba, sectorSize, &sectorsRead) != ResultSuccess) {
        return true;
    }
    return VerifyExtensionAtSector(ByteView(sector), extension, m_source, sectorSize, lba);
}
