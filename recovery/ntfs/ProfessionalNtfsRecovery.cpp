#include "recovery/ntfs/ProfessionalNtfsRecovery.h"

#include "recovery/metadata/FileSystemRecognition.h"
#include "recovery/ntfs/RunReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

constexpr std::size_t BootBytes = 4096;

}  // namespace

ResultCode CProfessionalNtfsRecovery::Open(std::shared_ptr<ScanSource> source, char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    m_isOpen = true;
    m_origin.DriveLetter = driveLetter;
    m_bytesPerSector = source->SectorSize();
    m_startLba = source->StartLba();
    m_sectorsPerRecord = m_bytesPerSector == 512 ? 2 : 1;
    m_recordSize = m_sectorsPerRecord * m_bytesPerSector;
    m_sectorsPerCluster = DefaultSectorsPerCluster(source->SectorCount(), m_bytesPerSector);
    (void)m_codec.SetSectorSize(m_bytesPerSector);
    m_scanSource = std::move(source);
    m_source.Open(m_scanSource);
    return ReadBoot();
}

// An NTFS boot sector in the target's first sectors gives the first table, not the cluster size.
ResultCode CProfessionalNtfsRecovery::ReadBoot()
{
    std::array<std::uint8_t, BootBytes> bytes = {};
    if (const ResultCode result = m_scanSource->ReadStart(bytes.data(), BootBytes)) {
        return result;
    }
    m_mfts.Clear();
    const ByteView boot = ByteView(std::span<const std::uint8_t>(bytes)).Sub(0, 512);
    if (IsNtfsBootSector(boot)) {
        const std::uint64_t mftLba = boot.U64(48) * boot.U8(13) + m_startLba;
        RunList runs;
        (void)ReadRunsAt(mftLba, runs);  // without runs the table is entered all the same
        m_mfts.Enter(mftLba, runs);
    }
    return ResultSuccess;
}

void CProfessionalNtfsRecovery::ForgetPass()
{
    m_folderWorkList.clear();
    m_listed.clear();
    m_depths.clear();
}

ResultCode CProfessionalNtfsRecovery::OpenEmptiedStore(std::string_view logName)
{
    ForgetPass();
    return MakeStoreCut(logName, 0);
}

ResultCode CProfessionalNtfsRecovery::OpenRecordStore(std::string_view logName)
{
    ForgetPass();
    UseLogFolder();
    return MakeStore(!logName.empty() ? std::string(logName)
                                      : ScanRecordStore::MakeName("Pro_Ntfs_", m_startLba));
}

ResultCode CProfessionalNtfsRecovery::ReadRecordAt(std::uint64_t lba, RecordBuffer& outBuffer)
{
    outBuffer.bytes.fill(0);
    const auto sectorSize = static_cast<std::int32_t>(m_bytesPerSector);
    std::int32_t sectorsRead = 0;
    return m_source.ReadSectors(outBuffer.bytes.data(),
                                static_cast<std::int32_t>(RecordReadBytes) / sectorSize, lba,
                                sectorSize, &sectorsRead);
}

ResultCode CProfessionalNtfsRecovery::ReadRepairedRecord(std::uint64_t lba, RecordBuffer& outBuffer)
{
    if (const ResultCode result = ReadRecordAt(lba, outBuffer)) {
        return result;
    }
    return HasFileMagic(outBuffer.View()) ? m_codec.ApplyFixups(outBuffer.bytes)
                                          : ResultNoFileRecord;
}

// The runs of the data attribute of the record at lba. Attribute lists are not followed.
ResultCode CProfessionalNtfsRecovery::ReadRunsAt(std::uint64_t lba, RunList& outRuns)
{
    RecordBuffer buffer;
    if (const ResultCode result = ReadRepairedRecord(lba, buffer)) {
        return result;
    }
    AttributeWalk walk(buffer.View(), m_recordSize, RunReaderRules);
    while (walk.Next()) {
        if (walk.Type() == AttributeAttributeList) {
            return ResultInvalidParameter;
        }
        if (walk.Type() == AttributeData) {
            m_codec.DecodeRunList(walk.Attribute(), outRuns);
            return ResultSuccess;
        }
    }
    return ResultAttributeMissing;
}

ResultCode CProfessionalNtfsRecovery::ReadRecordRuns(std::uint64_t lba, RunList& outRuns)
{
    RecordBuffer buffer;
    if (const ResultCode result = ReadRepairedRecord(lba, buffer)) {
        return result;
    }
    if (FirstAttributeOf(buffer.View()) >= m_recordSize) {
        return ResultInvalidParameter;
    }
    AttributeWalk walk(buffer.View(), m_recordSize, ResidentReaderRules);
    while (walk.Next() && walk.Type() != AttributeAttributeList) {
        if (walk.Type() == AttributeData) {
            m_codec.DecodeRunList(walk.Attribute(), outRuns);
            return ResultSuccess;
        }
    }
    return ResultAttributeMissing;
}

ResultCode CProfessionalNtfsRecovery::ReadResidentData(std::uint64_t lba,
                                                       std::span<std::uint8_t> buffer)
{
    RecordBuffer bytes;
    if (const ResultCode result = ReadRepairedRecord(lba, bytes)) {
        return result;
    }
    if (FirstAttributeOf(bytes.View()) >= m_recordSize) {
        return ResultInvalidParameter;
    }
    ByteView value;
    const ResultCode result = FindResidentData(bytes.View(), m_recordSize, m_recordSize, value);
    if (result == ResultSuccess && !value.Empty()) {
        std::memcpy(buffer.data(), value.Data(), std::min(value.Size(), buffer.size()));
    }
    return result;
}

std::optional<std::uint64_t> CProfessionalNtfsRecovery::FirstDataSector(const FileRecord& record)
{
    RunList runs;
    if (ReadRecordRuns(record.EntrySector, runs) != ResultSuccess || runs.empty()) {
        return std::nullopt;
    }
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    return SectorOfCluster(lcn, record.ClusterBytes, m_bytesPerSector) + record.PartitionStart;
}

ResultCode CProfessionalNtfsRecovery::KeyOf(const FileRecord* parentRecord,
                                            std::uint32_t depth,
                                            KeyUse use,
                                            std::optional<std::uint64_t>* outKey) const
{
    if (!HasStore()) {
        return ResultSuccess;
    }
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    *outKey = MakeStoreKey(depth, node == 0 && use == KeyUse::Count ? RootRecordNumber : node);
    return ResultSuccess;
}

std::unique_ptr<IRecordReader> CProfessionalNtfsRecovery::MakeReader(const FileRecord& record)
{
    const std::uint64_t lba = record.EntrySector;
    RunReader::Data data;
    data.readResident = [this, lba](std::span<std::uint8_t> buffer) {
        return ReadResidentData(lba, buffer);
    };
    data.readRuns = [this, lba](RunList& outRuns) { return ReadRecordRuns(lba, outRuns); };
    return std::make_unique<RunReader>(m_source, m_bytesPerSector, record, std::move(data));
}
