#include "recovery/fat/ProfessionalFatRecovery.h"

#include "recovery/RestoreSupport.h"
#include "recovery/fat/ClusterCopy.h"
#include "storage/ByteReader.h"
#include "storage/DiskGeometry.h"

ResultCode CProfessionalFatRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                                   char16_t letter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    imagePath = filePath;
    StartLba = 0;
    SectorCount = opened.sizeBytes / static_cast<std::uint64_t>(BytesPerSector);
    DriveLetter = letter;
    isOpen = true;
    LastResolved = {};
    LastPlaced = {};
    return Source.OpenImage(filePath);
}

ResultCode CProfessionalFatRecovery::OpenPartition(std::uint32_t diskNumber,
                                                   std::uint64_t startLba,
                                                   std::uint64_t /*sectorCount*/,
                                                   char16_t letter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    DiskNumber = diskNumber;
    StartLba = startLba;
    DriveLetter = letter;
    BytesPerSector = static_cast<std::int32_t>(opened.sectorSize);
    // The whole disk's size by its geometry, not the target's, is what clusters are checked against.
    SectorCount = GeometrySectors(opened.sizeBytes / opened.sectorSize);
    isOpen = true;
    LastResolved = {};
    LastPlaced = {};
    return Source.OpenDrive(diskNumber);
}

ResultCode CProfessionalFatRecovery::SetCallbacks(ProgressCallback /*scanCallback*/,
                                                  FileProgressCallback file,
                                                  void* context,
                                                  std::int32_t /*progressRange*/)
{
    fileCallback = file;
    callbackContext = context;
    return ResultSuccess;
}

ResultCode CProfessionalFatRecovery::OpenRecordStore(std::string_view logName)
{
    Volumes.Clear(StartLba);
    Samples.Clear();
    PendingFiles.Clear();
    NameCarries.Clear();
    StoredSectors.Clear();
    Folders.clear();
    ReferencedFolders.clear();
    settled.clear();
    settledClusters.clear();
    highWords.Clear();
    RootCluster = 2;
    probe.Open(Source, BytesPerSector, StartLba + SectorCount);
    probe.Clear(RootCluster);
    Store = std::make_unique<ScanRecordStore>();
    Store->SetSearchCallback(searchCallback, searchContext);
    return Store->OpenStore(!logName.empty() ? std::string(logName)
                                             : ScanRecordStore::MakeName("Pro_Fat_", StartLba));
}

ResultCode CProfessionalFatRecovery::Scan(const std::string* /*logName*/)
{
    return ResultSuccess;
}

ResultCode CProfessionalFatRecovery::ListChildren(const FileRecord* parentRecord,
                                                  std::uint32_t depth,
                                                  FileRecordList& outRecords)
{
    if (Store == nullptr) {
        return ResultSuccess;
    }
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    (void)Store->FlushStore();  // what could not be written is missing from the list
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    return Store->ListChildren(ScanRecordStore::MakeKey(depth, node), outRecords);
}

ResultCode CProfessionalFatRecovery::CountChildren(const FileRecord* parentRecord,
                                                   std::uint32_t depth,
                                                   std::uint32_t& outCount)
{
    if (Store == nullptr) {
        return ResultSuccess;
    }
    if (parentRecord == nullptr && depth != 0) {
        return ResultInvalidParameter;
    }
    (void)Store->FlushStore();  // as above
    const std::uint32_t node = parentRecord != nullptr ? parentRecord->NodeId : 0;
    return Store->CountChildren(ScanRecordStore::MakeKey(depth, node), outCount);
}

std::uint64_t CProfessionalFatRecovery::GetRecordCount() const
{
    return Store != nullptr ? Store->GetRecordCount() : 0;
}

ResultCode CProfessionalFatRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return Store != nullptr ? Store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

ResultCode CProfessionalFatRecovery::RestoreRecord(const FileRecord* record,
                                                   const std::filesystem::path& destPath,
                                                   std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const ClusterReader reader = {Source, BytesPerSector,
                                  [](std::uint32_t cluster) { return cluster + 1; }};
    const auto restoreFile = [&](const FileRecord& file, const std::filesystem::path& path) {
        return RestoreClusters(reader, file, path, fileCallback, callbackContext);
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
    searchCallback = callback;
    searchContext = context;
    if (Store == nullptr) {
        return ResultInvalidParameter;
    }
    Store->SetSearchCallback(callback, context);
    return ResultSuccess;
}

std::int32_t CProfessionalFatRecovery::SearchRecords(std::string_view extensionPattern,
                                                     FileRecordList& outRecords)
{
    return Store != nullptr ? Store->SearchRecords(extensionPattern, outRecords) : 0;
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
    const ClusterReader reader = {Source, BytesPerSector,
                                  [](std::uint32_t cluster) { return cluster + 1; }};
    return PreviewClusters(reader, *record,
                           {tempPathInOut, buffer, inOutSize, progressFn, context});
}

void CProfessionalFatRecovery::FlushStore()
{
    if (Store != nullptr) {
        (void)Store->FlushStore();  // what could not be written is not found
    }
}
