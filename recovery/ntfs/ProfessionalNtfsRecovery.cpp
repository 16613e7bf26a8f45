#include "recovery/ntfs/ProfessionalNtfsRecovery.h"

#include "recovery/RestoreSupport.h"
#include "recovery/metadata/FileSystemRecognition.h"
#include "recovery/ntfs/NtfsRunCopy.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t BootBytes = 4096;

}  // namespace

// Reads the target's first sectors; an NTFS boot sector there gives the first table, not the cluster size.
ResultCode CProfessionalNtfsRecovery::OpenAt(const OpenedSource& opened,
                                             std::uint64_t startLba,
                                             std::uint64_t sectorCount)
{
    m_startLba = startLba;
    m_sectorsPerRecord = m_bytesPerSector == 512 ? 2 : 1;
    m_recordSize = m_sectorsPerRecord * m_bytesPerSector;
    m_sectorsPerCluster = DefaultSectorsPerCluster(sectorCount, m_bytesPerSector);
    (void)m_codec.SetSectorSize(m_bytesPerSector);
    std::array<std::uint8_t, BootBytes> bytes = {};
    if (const ResultCode result =
            ReadWhole(*opened.reader, m_startLba * m_bytesPerSector, bytes.data(), BootBytes)) {
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

ResultCode CProfessionalNtfsRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                                    char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    m_isOpen = true;
    m_origin.DriveLetter = driveLetter;
    const ResultCode result = m_source.OpenImage(filePath);
    const ResultCode booted = OpenAt(opened, 0, opened.sizeBytes / m_bytesPerSector);
    return booted != ResultSuccess ? booted : result;
}

ResultCode CProfessionalNtfsRecovery::OpenPartition(std::uint32_t diskNumber,
                                                    std::uint64_t startLba,
                                                    std::uint64_t sectorCount,
                                                    char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    m_isOpen = true;
    m_origin.DriveLetter = driveLetter;
    m_bytesPerSector = opened.sectorSize != 0 ? opened.sectorSize : 512;
    const ResultCode result = m_source.OpenDrive(diskNumber);
    const ResultCode booted = OpenAt(opened, startLba, sectorCount);
    return booted != ResultSuccess ? booted : result;
}

ResultCode CProfessionalNtfsRecovery::SetCallbacks(ProgressCallback /*scanCallback*/,
                                                   FileProgressCallback fileCallback,
                                                   void* context,
                                                   std::int32_t /*progressRange*/)
{
    m_fileCallback = fileCallback;
    m_callbackContext = context;
    return ResultSuccess;
}

ResultCode CProfessionalNtfsRecovery::OpenRecordStore(std::string_view logName)
{
    m_folderWorkList.clear();
    m_listed.clear();
    m_depths.clear();
    m_store = std::make_unique<ScanRecordStore>();
    m_store->SetSearchCallback(m_searchCallback, m_searchContext);
    return m_store->OpenStore(!logName.empty()
                                  ? std::string(logName)
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

ResultCode CProfessionalNtfsRecovery::ReadRecordRuns(const FileRecord& record, RunList& outRuns)
{
    RecordBuffer buffer;
    if (const ResultCode result = ReadRepairedRecord(record.EntrySector, buffer)) {
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

ResultCode CProfessionalNtfsRecovery::ReadResidentData(const FileRecord& record,
                                                       std::span<std::uint8_t> buffer)
{
    RecordBuffer bytes;
    if (const ResultCode result = ReadRepairedRecord(record.EntrySector, bytes)) {
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
    if (ReadRecordRuns(record, runs) != ResultSuccess || runs.empty()) {
        return std::nullopt;
    }
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    return SectorOfCluster(lcn, record.ClusterBytes, m_bytesPerSector) + record.PartitionStart;
}

ResultCode CProfessionalNtfsRecovery::Scan(const std::string* /*logName*/)
{
    return ResultSuccess;
}

ResultCode CProfessionalNtfsRecovery::ListChildren(const FileRecord* parentRecord,
                                                   std::uint32_t depth,
                                                   FileRecordList& outRecords)
{
    if (m_store == nullptr) {
        return ResultSuccess;
    }
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    (void)m_store->FlushStore();  // what could not be written is missing from the list
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    return m_store->ListChildren(ScanRecordStore::MakeKey(depth, node), outRecords);
}

// Unlike the listing, the count takes the root for a parent without a number.
ResultCode CProfessionalNtfsRecovery::CountChildren(const FileRecord* parentRecord,
                                                    std::uint32_t depth,
                                                    std::uint32_t& outCount)
{
    if (m_store == nullptr) {
        return ResultSuccess;
    }
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    (void)m_store->FlushStore();  // as above
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    const std::uint32_t folder = node != 0 ? node : RootRecordNumber;
    return m_store->CountChildren(ScanRecordStore::MakeKey(depth, folder), outCount);
}

std::uint64_t CProfessionalNtfsRecovery::GetRecordCount() const
{
    return m_store != nullptr ? m_store->GetRecordCount() : 0;
}

ResultCode CProfessionalNtfsRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return m_store != nullptr ? m_store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

ResultCode CProfessionalNtfsRecovery::RestoreRecord(const FileRecord* record,
                                                    const std::filesystem::path& destPath,
                                                    std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const NtfsDataReader reader = {
        m_source, m_bytesPerSector,
        [this](const FileRecord& file, std::span<std::uint8_t> buffer) {
            return ReadResidentData(file, buffer);
        },
        [this](const FileRecord& file, RunList& outRuns) { return ReadRecordRuns(file, outRuns); }};
    const auto restoreFile = [&](const FileRecord& file, const std::filesystem::path& path) {
        return RestoreNtfsFile(reader, file, path, m_fileCallback, m_callbackContext);
    };
    if (record->IsFolder != 0) {
        return RestoreFolderTree(*this, *record, destPath, baseDepth, restoreFile);
    }
    if (const ResultCode made = MakeFolderOf(destPath)) {
        return made;
    }
    return restoreFile(*record, destPath);
}

std::int32_t CProfessionalNtfsRecovery::NextFreeRange(std::uint64_t& /*inOutSector*/,
                                                      std::uint64_t& /*outLength*/)
{
    return 0;
}

ResultCode CProfessionalNtfsRecovery::SetSearchCallback(SearchProgressCallback callback,
                                                        void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
    if (m_store == nullptr) {
        return ResultInvalidParameter;
    }
    m_store->SetSearchCallback(callback, context);
    return ResultSuccess;
}

std::int32_t CProfessionalNtfsRecovery::SearchRecords(std::string_view extensionPattern,
                                                      FileRecordList& outRecords)
{
    return m_store != nullptr ? m_store->SearchRecords(extensionPattern, outRecords) : 0;
}

ResultCode CProfessionalNtfsRecovery::BuildUsedClusterMap()
{
    return ResultSuccess;
}

ResultCode CProfessionalNtfsRecovery::ReadRecordData(const FileRecord* record,
                                                     std::filesystem::path& tempPathInOut,
                                                     std::uint8_t* buffer,
                                                     std::uint32_t& inOutSize,
                                                     PreviewProgressCallback progressFn,
                                                     void* context)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const NtfsDataReader reader = {
        m_source, m_bytesPerSector,
        [this](const FileRecord& file, std::span<std::uint8_t> bytes) {
            return ReadResidentData(file, bytes);
        },
        [this](const FileRecord& file, RunList& outRuns) { return ReadRecordRuns(file, outRuns); }};
    return PreviewNtfsFile(reader, *record, {tempPathInOut, buffer, inOutSize, progressFn, context},
                           false);
}

void CProfessionalNtfsRecovery::FlushStore()
{
    if (m_store != nullptr) {
        (void)m_store->FlushStore();  // what could not be written is not found
    }
}
