#include "recovery/ntfs/FastNtfsRecovery.h"

#include "storage/ByteReader.h"

#include <array>

namespace {

constexpr std::size_t BootBytes = 4096;
constexpr std::uint64_t ImageSectorSize = 512;

}  // namespace

// The boot sector is looked for by the drive's sector size; the size that it states itself counts from then on.
ResultCode CFastNtfsRecovery::ReadBoot(const OpenedSource& opened, std::uint64_t startLba)
{
    std::array<std::uint8_t, BootBytes> boot = {};
    if (const ResultCode result =
            ReadWhole(*opened.reader, startLba * opened.sectorSize, boot.data(), BootBytes)) {
        return result;
    }
    m_volume.PartitionStart = startLba;
    return ReadNtfsVolume(ByteView(boot), m_volume);
}

void CFastNtfsRecovery::FinishOpen()
{
    m_readers.Bind();
    m_isOpen = true;
}

ResultCode CFastNtfsRecovery::OpenPartition(std::uint32_t diskNumber,
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
    m_volume.SectorCount = sectorCount;
    m_origin.DriveLetter = driveLetter;
    ResultCode result = ReadBoot(opened, startLba);
    if (result == ResultSuccess) {
        result = m_source.OpenDrive(diskNumber);
    }
    if (result == ResultSuccess) {
        FinishOpen();
    }
    return result;
}

ResultCode CFastNtfsRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                            char16_t driveLetter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    // In sectors of 512 whatever the volume has.
    m_volume.SectorCount = opened.sizeBytes / ImageSectorSize;
    m_origin.DriveLetter = driveLetter;
    ResultCode result = ReadBoot(opened, 0);
    if (result == ResultSuccess) {
        result = m_source.OpenImage(filePath);
    }
    if (result == ResultSuccess) {
        FinishOpen();
    }
    return result;
}

ResultCode CFastNtfsRecovery::SetCallbacks(ProgressCallback scanCallback,
                                           FileProgressCallback fileCallback,
                                           void* context,
                                           std::int32_t progressRange)
{
    m_scanCallback = scanCallback;
    m_fileCallback = fileCallback;
    m_callbackContext = context;
    m_progressRange = progressRange;
    return ResultSuccess;
}

ResultCode CFastNtfsRecovery::KeyOf(const FileRecord* parentRecord,
                                    std::uint32_t depth,
                                    std::uint64_t* outKey) const
{
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    *outKey = ScanRecordStore::MakeKey(depth, node != 0 ? node : RootRecordNumber);
    return ResultSuccess;
}

ResultCode CFastNtfsRecovery::ListChildren(const FileRecord* parentRecord,
                                           std::uint32_t depth,
                                           FileRecordList& outRecords)
{
    std::uint64_t key = 0;
    if (const ResultCode result = KeyOf(parentRecord, depth, &key)) {
        return result;
    }
    if (m_store == nullptr) {
        return ResultSuccess;
    }
    (void)m_store->FlushStore();  // what could not be written is missing from the list
    return m_store->ListChildren(key, outRecords);
}

ResultCode CFastNtfsRecovery::CountChildren(const FileRecord* parentRecord,
                                            std::uint32_t depth,
                                            std::uint32_t& outCount)
{
    std::uint64_t key = 0;
    if (const ResultCode result = KeyOf(parentRecord, depth, &key)) {
        return result;
    }
    if (m_store == nullptr) {
        outCount = 0;
        return ResultSuccess;
    }
    (void)m_store->FlushStore();  // as above
    return m_store->CountChildren(key, outCount);
}

std::uint64_t CFastNtfsRecovery::GetRecordCount() const
{
    return m_store != nullptr ? m_store->GetRecordCount() : 0;
}

ResultCode CFastNtfsRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return m_store != nullptr ? m_store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

std::int32_t CFastNtfsRecovery::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    m_usedClusters.NextFreeRange(m_volume, inOutSector, outLength);
    return 1;
}

ResultCode CFastNtfsRecovery::BuildUsedClusterMap()
{
    if (!m_isOpen) {
        return ResultInvalidHandle;
    }
    return m_usedClusters.Build(m_readers, m_volume, m_source);
}

ResultCode CFastNtfsRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
    if (m_store != nullptr) {
        m_store->SetSearchCallback(callback, context);
    }
    return ResultSuccess;
}

std::int32_t CFastNtfsRecovery::SearchRecords(std::string_view extensionPattern,
                                              FileRecordList& outRecords)
{
    return m_store != nullptr ? m_store->SearchRecords(extensionPattern, outRecords) : 0;
}

NtfsDataReader CFastNtfsRecovery::DataReader()
{
    return {m_source, m_volume.BytesPerSector,
            [this](const FileRecord& record, std::span<std::uint8_t> buffer) {
                std::uint32_t size = 0;
                return m_readers.ReadResidentData(record.EntrySector, buffer, size);
            },
            [this](const FileRecord& record, RunList& outRuns) {
                return m_readers.ReadAttributeRuns(record.EntrySector, AttributeData, outRuns);
            }};
}

ResultCode CFastNtfsRecovery::RestoreRecord(const FileRecord* record,
                                            const std::filesystem::path& destPath,
                                            std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const NtfsDataReader reader = DataReader();
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

ResultCode CFastNtfsRecovery::ReadRecordData(const FileRecord* record,
                                             std::filesystem::path& tempPathInOut,
                                             std::uint8_t* buffer,
                                             std::uint32_t& inOutSize,
                                             PreviewProgressCallback progressFn,
                                             void* context)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    return PreviewNtfsFile(DataReader(), *record,
                           {tempPathInOut, buffer, inOutSize, progressFn, context}, true);
}

std::optional<std::uint64_t> CFastNtfsRecovery::FirstDataSector(const FileRecord& record)
{
    RunList runs;
    if (m_readers.ReadAttributeRuns(record.EntrySector, AttributeData, runs) != ResultSuccess ||
        runs.empty()) {
        return std::nullopt;
    }
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    return SectorOfCluster(lcn, record.ClusterBytes, m_volume.BytesPerSector) +
           record.PartitionStart;
}
