#include "recovery/fat/FastFatRecovery.h"

#include "storage/ByteReader.h"

#include <array>

namespace {

constexpr std::size_t BootBytes = 4096;
constexpr std::uint64_t ImageSectorSize = 512;

}  // namespace

// Reads the boot sector and takes the geometry; startLba is set.
ResultCode CFastFatRecovery::OpenSource(OpenedSource& opened)
{
    std::array<std::uint8_t, BootBytes> bootSector = {};
    if (const ResultCode result = ReadWhole(*opened.reader, m_startLba * opened.sectorSize,
                                            bootSector.data(), BootBytes)) {
        return result;
    }
    return ReadFatGeometry(ByteView(bootSector), m_geometry);
}

ResultCode CFastFatRecovery::OpenPartition(std::uint32_t diskNumber,
                                           std::uint64_t firstLba,
                                           std::uint64_t sectors,
                                           char16_t letter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    m_startLba = firstLba;
    m_sectorCount = sectors;
    m_driveLetter = letter;
    ResultCode result = OpenSource(opened);
    if (result == ResultSuccess) {
        result = m_source.OpenDrive(diskNumber);
    }
    if (result == ResultSuccess) {
        m_table.Open(m_source, m_geometry, m_startLba + m_geometry.reservedSectors);
        m_folderDepth.Open(m_source, m_geometry, m_startLba);
        m_isOpen = true;
    }
    return result;
}

ResultCode CFastFatRecovery::OpenImageFile(const std::filesystem::path& filePath, char16_t letter)
{
    if (m_isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    m_startLba = 0;
    m_sectorCount = opened.sizeBytes / ImageSectorSize;
    m_driveLetter = letter;
    ResultCode result = OpenSource(opened);
    if (result == ResultSuccess) {
        result = m_source.OpenImage(filePath);
    }
    if (result == ResultSuccess) {
        m_table.Open(m_source, m_geometry, m_startLba + m_geometry.reservedSectors);
        m_folderDepth.Open(m_source, m_geometry, m_startLba);
        m_isOpen = true;
    }
    return result;
}

ResultCode CFastFatRecovery::SetCallbacks(ProgressCallback scan,
                                          FileProgressCallback file,
                                          void* context,
                                          std::int32_t range)
{
    m_scanCallback = scan;
    m_fileCallback = file;
    m_callbackContext = context;
    m_progressRange = range;
    return ResultSuccess;
}

ResultCode CFastFatRecovery::KeyOf(const FileRecord* parentRecord,
                                   std::uint32_t depth,
                                   std::uint64_t* outKey) const
{
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    if (node == 0) {
        node = m_geometry.rootCluster;
    }
    *outKey = ScanRecordStore::MakeKey(depth, node);
    return ResultSuccess;
}

ResultCode CFastFatRecovery::ListChildren(const FileRecord* parentRecord,
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

ResultCode CFastFatRecovery::CountChildren(const FileRecord* parentRecord,
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

std::uint64_t CFastFatRecovery::GetRecordCount() const
{
    return m_store != nullptr ? m_store->GetRecordCount() : 0;
}

ResultCode CFastFatRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return m_store != nullptr ? m_store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

std::int32_t CFastFatRecovery::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    m_usedClusters.NextFreeRange(inOutSector, outLength);
    return 1;
}

ResultCode CFastFatRecovery::BuildUsedClusterMap()
{
    if (!m_isOpen) {
        return ResultInvalidHandle;
    }
    m_usedClusters.Build(m_table, m_geometry, m_sectorCount);
    return ResultSuccess;
}

ResultCode CFastFatRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
    if (m_store != nullptr) {
        m_store->SetSearchCallback(callback, context);
    }
    return ResultSuccess;
}

std::int32_t CFastFatRecovery::SearchRecords(std::string_view extensionPattern,
                                             FileRecordList& outRecords)
{
    return m_store != nullptr ? m_store->SearchRecords(extensionPattern, outRecords) : 0;
}
