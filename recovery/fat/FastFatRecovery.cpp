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
    if (const ResultCode result =
            ReadWhole(*opened.reader, startLba * opened.sectorSize, bootSector.data(), BootBytes)) {
        return result;
    }
    return ReadFatGeometry(ByteView(bootSector), geometry);
}

ResultCode CFastFatRecovery::OpenPartition(std::uint32_t diskNumber,
                                           std::uint64_t firstLba,
                                           std::uint64_t sectors,
                                           char16_t letter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    startLba = firstLba;
    sectorCount = sectors;
    driveLetter = letter;
    ResultCode result = OpenSource(opened);
    if (result == ResultSuccess) {
        result = source.OpenDrive(diskNumber);
    }
    if (result == ResultSuccess) {
        table.Open(source, geometry, startLba + geometry.reservedSectors);
        folderDepth.Open(source, geometry, startLba);
        isOpen = true;
    }
    return result;
}

ResultCode CFastFatRecovery::OpenImageFile(const std::filesystem::path& filePath, char16_t letter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    startLba = 0;
    sectorCount = opened.sizeBytes / ImageSectorSize;
    driveLetter = letter;
    ResultCode result = OpenSource(opened);
    if (result == ResultSuccess) {
        result = source.OpenImage(filePath);
    }
    if (result == ResultSuccess) {
        table.Open(source, geometry, startLba + geometry.reservedSectors);
        folderDepth.Open(source, geometry, startLba);
        isOpen = true;
    }
    return result;
}

ResultCode CFastFatRecovery::SetCallbacks(ProgressCallback scan,
                                          FileProgressCallback file,
                                          void* context,
                                          std::int32_t range)
{
    scanCallback = scan;
    fileCallback = file;
    callbackContext = context;
    progressRange = range;
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
        node = geometry.rootCluster;
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
    if (store == nullptr) {
        return ResultSuccess;
    }
    (void)store->FlushStore();  // what could not be written is missing from the list
    return store->ListChildren(key, outRecords);
}

ResultCode CFastFatRecovery::CountChildren(const FileRecord* parentRecord,
                                           std::uint32_t depth,
                                           std::uint32_t& outCount)
{
    std::uint64_t key = 0;
    if (const ResultCode result = KeyOf(parentRecord, depth, &key)) {
        return result;
    }
    if (store == nullptr) {
        outCount = 0;
        return ResultSuccess;
    }
    (void)store->FlushStore();  // as above
    return store->CountChildren(key, outCount);
}

std::uint64_t CFastFatRecovery::GetRecordCount() const
{
    return store != nullptr ? store->GetRecordCount() : 0;
}

ResultCode CFastFatRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return store != nullptr ? store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

std::int32_t CFastFatRecovery::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    usedClusters.NextFreeRange(inOutSector, outLength);
    return 1;
}

ResultCode CFastFatRecovery::BuildUsedClusterMap()
{
    if (!isOpen) {
        return ResultInvalidHandle;
    }
    usedClusters.Build(table, geometry, sectorCount);
    return ResultSuccess;
}

ResultCode CFastFatRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    searchCallback = callback;
    searchContext = context;
    if (store != nullptr) {
        store->SetSearchCallback(callback, context);
    }
    return ResultSuccess;
}

std::int32_t CFastFatRecovery::SearchRecords(std::string_view extensionPattern,
                                             FileRecordList& outRecords)
{
    return store != nullptr ? store->SearchRecords(extensionPattern, outRecords) : 0;
}
