#include "recovery/fat/ProfessionalFatRecovery.h"

#include "recovery/RestoreSupport.h"
#include "recovery/fat/ClusterCopy.h"
#include "storage/ByteReader.h"
#include "storage/DiskGeometry.h"

ResultCode CProfessionalFatRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                                   char16_t letter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    m_imagePath = filePath;
    m_startLba = 0;
    m_sectorCount = opened.sizeBytes / static_cast<std::uint64_t>(m_bytesPerSector);
    m_driveLetter = letter;
    m_isOpen = true;
    m_lastResolved = {};
    m_lastPlaced = {};
    return m_source.OpenImage(filePath);
}

ResultCode CProfessionalFatRecovery::OpenPartition(std::uint32_t diskNumber,
                                                   std::uint64_t startLba,
                                                   std::uint64_t /*sectorCount*/,
                                                   char16_t letter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    m_diskNumber = diskNumber;
    m_startLba = startLba;
    m_driveLetter = letter;
    m_bytesPerSector = static_cast<std::int32_t>(opened.sectorSize);
    // The whole disk's size by its geometry, not the target's, is what clusters are checked against.
    m_sectorCount = GeometrySectors(opened.sizeBytes / opened.sectorSize);
    m_isOpen = true;
    m_lastResolved = {};
    m_lastPlaced = {};
    return m_source.OpenDrive(diskNumber);
}

ResultCode CProfessionalFatRecovery::SetCallbacks(ProgressCallback /*scanCallback*/,
                                                  FileProgressCallback file,
                                                  void* context,
                                                  std::int32_t /*progressRange*/)
{
    m_fileCallback = file;
    m_callbackContext = context;
    return ResultSuccess;
}

ResultCode CProfessionalFatRecovery::OpenRecordStore(std::string_view logName)
{
    m_volumes.Clear(m_startLba);
    m_samples.Clear();
    m_pendingFiles.Clear();
    m_nameCarries.Clear();
    m_storedSectors.Clear();
    m_folders.clear();
    m_referencedFolders.clear();
    m_settled.clear();
    m_settledClusters.clear();
    m_highWords.Clear();
    m_rootCluster = 2;
    m_probe.Open(m_source, m_bytesPerSector, m_startLba + m_sectorCount);
    m_probe.Clear(m_rootCluster);
    m_store = std::make_unique<ScanRecordStore>();
    m_store->SetSearchCallback(m_searchCallback, m_searchContext);
    return m_store->OpenStore(!logName.empty() ? std::string(logName)
                                               : ScanRecordStore::MakeName("Pro_Fat_", m_startLba));
}

ResultCode CProfessionalFatRecovery::Scan(const std::string* /*logName*/)
{
    return ResultSuccess;
}

ResultCode CProfessionalFatRecovery::ListChildren(const FileRecord* parentRecord,
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

ResultCode CProfessionalFatRecovery::CountChildren(const FileRecord* parentRecord,
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
    return m_store->CountChildren(ScanRecordStore::MakeKey(depth, node), outCount);
}

std::uint64_t CProfessionalFatRecovery::GetRecordCount() const
{
    return m_store != nullptr ? m_store->GetRecordCount() : 0;
}

ResultCode CProfessionalFatRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return m_store != nullptr ? m_store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

ResultCode CProfessionalFatRecovery::RestoreRecord(const FileRecord* record,
                                                   const std::filesystem::path& destPath,
                                                   std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const ClusterReader reader = {m_source, m_bytesPerSector,
                                  [](std::uint32_t cluster) { return cluster + 1; }};
    const auto restoreFile = [&](const FileRecord& file, const std::filesystem::path& path) {
        return RestoreClusters(reader, file, path, m_fileCallback, m_callbackContext);
    };
    if (record->IsFolder != 0) {
        return RestoreFolderTree(*this, *record, destPath, baseDepth, restoreFile);
    }
    if (const ResultCode made = MakeFolderOf(destPath)) {
        return made;
    }
    return restoreFile(*record, destPath);
}

std::int32_t CProfessionalFatRecovery::NextFreeRange(std::uint64_t& /*inOutSector*/,
                                                     std::uint64_t& /*outLength*/)
{
    return 0;
}

ResultCode CProfessionalFatRecovery::SetSearchCallback(SearchProgressCallback callback,
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

std::int32_t CProfessionalFatRecovery::SearchRecords(std::string_view extensionPattern,
                                                     FileRecordList& outRecords)
{
    return m_store != nullptr ? m_store->SearchRecords(extensionPattern, outRecords) : 0;
}

ResultCode CProfessionalFatRecovery::BuildUsedClusterMap()
{
    return ResultSuccess;
}

ResultCode CProfessionalFatRecovery::ReadRecordData(const FileRecord* record,
                                                    std::filesystem::path& tempPathInOut,
                                                    std::uint8_t* buffer,
                                                    std::uint32_t& inOutSize,
                                                    PreviewProgressCallback progressFn,
                                                    void* context)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const ClusterReader reader = {m_source, m_bytesPerSector,
                                  [](std::uint32_t cluster) { return cluster + 1; }};
    return PreviewClusters(reader, *record,
                           {tempPathInOut, buffer, inOutSize, progressFn, context});
}

void CProfessionalFatRecovery::FlushStore()
{
    if (m_store != nullptr) {
        (void)m_store->FlushStore();  // what could not be written is not found
    }
}
