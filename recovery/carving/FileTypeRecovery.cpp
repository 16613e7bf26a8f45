#include "recovery/carving/FileTypeRecovery.h"

#include "recovery/carving/CarveContext.h"

namespace {

constexpr std::string_view StorePrefix = "File_Type_";

}  // namespace

ResultCode CFileTypeRecovery::MakeStore(std::string_view logName)
{
    m_store = std::make_unique<ScanRecordStore>();
    return m_store->OpenStore(logName);
}

ResultCode CFileTypeRecovery::OpenImageFile(const std::filesystem::path& filePath, char16_t letter)
{
    m_driveLetter = letter;
    if (const ResultCode result = m_source.OpenImage(filePath)) {
        return result;
    }
    return MakeStore(ScanRecordStore::MakeName(StorePrefix, 0));
}

ResultCode CFileTypeRecovery::OpenPartition(std::uint32_t diskNumber,
                                            std::uint64_t startLba,
                                            std::uint64_t,
                                            char16_t letter)
{
    m_driveLetter = letter;
    if (const ResultCode result = m_source.OpenDrive(diskNumber)) {
        return result;
    }
    return MakeStore(ScanRecordStore::MakeName(StorePrefix, startLba));
}

ResultCode CFileTypeRecovery::ReopenStore(std::string_view logName,
                                          char16_t letter,
                                          const std::filesystem::path& imagePath,
                                          std::int32_t size)
{
    m_driveLetter = letter;
    m_sectorSize = size;
    if (const ResultCode result = m_source.OpenImage(imagePath)) {
        return result;
    }
    return MakeStore(logName);
}

ResultCode CFileTypeRecovery::ReopenStore(std::string_view logName,
                                          char16_t letter,
                                          std::uint32_t diskNumber,
                                          std::int32_t size)
{
    m_driveLetter = letter;
    m_sectorSize = size;
    if (const ResultCode result = m_source.OpenDrive(diskNumber)) {
        return result;
    }
    return MakeStore(logName);
}

ResultCode CFileTypeRecovery::CarveAtSector(ByteView sector,
                                            std::uint64_t lba,
                                            const CarveProgress& progress,
                                            SectorSource& passSource,
                                            std::int32_t size,
                                            std::int64_t& outStep,
                                            std::int64_t& inOutFilesFound)
{
    m_sectorSize = size;
    outStep = 1;
    if (m_store == nullptr) {
        return ResultInvalidParameter;
    }
    CarvedHead head;
    if (const ResultCode result =
            TrySignatureTable(sector, lba, progress, passSource, size, head)) {
        return result;
    }
    FileRecord& record = m_store->ReserveRecord();
    record.DriveLetter = m_driveLetter;
    record.EngineKind = EngineKindCarved;
    record.HeadIntact = 1;
    record.RecordNumber = m_store->GetRecordCount();
    record.ClusterBytes = NoClusterBytes;
    record.FileSize = static_cast<std::uint64_t>(head.lengthBytes);
    record.EntrySector = lba;
    record.SetName(head.name);
    m_store->LinkRecord(0, 0, record.RecordNumber);
    if (head.lengthEnd == LengthEnd::Seen) {
        outStep = head.lengthBytes / size + (head.lengthBytes % size != 0 ? 1 : 0);
    }
    ++inOutFilesFound;
    return ResultSuccess;
}

ResultCode CFileTypeRecovery::SetCallbacks(ProgressCallback scanCallback,
                                           FileProgressCallback restoreCallback,
                                           void* context,
                                           std::int32_t progressRange)
{
    m_fileCallback = restoreCallback;
    m_callbackContext = context;
    CarveContext& carve = CarveContext::Instance();
    carve.scanCallback = scanCallback;
    carve.fileCallback = restoreCallback;
    carve.callbackContext = context;
    carve.progressRange = progressRange;
    return ResultSuccess;
}

ResultCode CFileTypeRecovery::Scan(const std::string*)
{
    return ResultSuccess;
}

ResultCode CFileTypeRecovery::ListChildren(const FileRecord* parentRecord,
                                           std::uint32_t depth,
                                           FileRecordList& outRecords)
{
    if (parentRecord != nullptr || depth != 0 || m_store == nullptr) {
        return ResultSuccess;
    }
    (void)m_store->FlushStore();  // what cannot be written is missing from the list
    return m_store->ListChildren(0, outRecords);
}

ResultCode CFileTypeRecovery::CountChildren(const FileRecord* parentRecord,
                                            std::uint32_t depth,
                                            std::uint32_t& outCount)
{
    if (parentRecord != nullptr || depth != 0 || m_store == nullptr) {
        return ResultSuccess;
    }
    (void)m_store->FlushStore();
    return m_store->CountChildren(0, outCount);
}

std::uint64_t CFileTypeRecovery::GetRecordCount() const
{
    return m_store != nullptr ? m_store->GetRecordCount() : 0;
}

ResultCode CFileTypeRecovery::GetRecordPath(const FileRecord*, std::string&)
{
    return ResultSuccess;
}

std::int32_t CFileTypeRecovery::NextFreeRange(std::uint64_t&, std::uint64_t&)
{
    return 0;
}

ResultCode CFileTypeRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    if (m_store == nullptr) {
        return ResultInvalidParameter;
    }
    m_store->SetSearchCallback(callback, context);
    return ResultSuccess;
}

std::int32_t CFileTypeRecovery::SearchRecords(std::string_view extensionPattern,
                                              FileRecordList& outRecords)
{
    return m_store != nullptr ? m_store->SearchRecords(extensionPattern, outRecords) : 0;
}

ResultCode CFileTypeRecovery::BuildUsedClusterMap()
{
    return ResultSuccess;
}

void CFileTypeRecovery::FlushStore()
{
    if (m_store != nullptr) {
        (void)m_store->FlushStore();  // what could not be written is not found
    }
}
