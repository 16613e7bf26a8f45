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
    Volume.PartitionStart = startLba;
    return ReadNtfsVolume(ByteView(boot), Volume);
}

void CFastNtfsRecovery::FinishOpen()
{
    Readers.Bind();
    isOpen = true;
}

ResultCode CFastNtfsRecovery::OpenPartition(std::uint32_t diskNumber,
                                            std::uint64_t startLba,
                                            std::uint64_t sectorCount,
                                            char16_t driveLetter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    Volume.SectorCount = sectorCount;
    Origin.DriveLetter = driveLetter;
    ResultCode result = ReadBoot(opened, startLba);
    if (result == ResultSuccess) {
        result = Source.OpenDrive(diskNumber);
    }
    if (result == ResultSuccess) {
        FinishOpen();
    }
    return result;
}

ResultCode CFastNtfsRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                            char16_t driveLetter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    // In sectors of 512 whatever the volume has.
    Volume.SectorCount = opened.sizeBytes / ImageSectorSize;
    Origin.DriveLetter = driveLetter;
    ResultCode result = ReadBoot(opened, 0);
    if (result == ResultSuccess) {
        result = Source.OpenImage(filePath);
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
    ScanCallback = scanCallback;
    FileCallback = fileCallback;
    CallbackContext = context;
    ProgressRange = progressRange;
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
    if (Store == nullptr) {
        return ResultSuccess;
    }
    (void)Store->FlushStore();  // what could not be written is missing from the list
    return Store->ListChildren(key, outRecords);
}

ResultCode CFastNtfsRecovery::CountChildren(const FileRecord* parentRecord,
                                            std::uint32_t depth,
                                            std::uint32_t& outCount)
{
    std::uint64_t key = 0;
    if (const ResultCode result = KeyOf(parentRecord, depth, &key)) {
        return result;
    }
    if (Store == nullptr) {
        outCount = 0;
        return ResultSuccess;
    }
    (void)Store->FlushStore();  // as above
    return Store->CountChildren(key, outCount);
}

std::uint64_t CFastNtfsRecovery::GetRecordCount() const
{
    return Store != nullptr ? Store->GetRecordCount() : 0;
}

ResultCode CFastNtfsRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return Store != nullptr ? Store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

std::int32_t CFastNtfsRecovery::NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength)
{
    UsedClusters.NextFreeRange(Volume, inOutSector, outLength);
    return 1;
}

ResultCode CFastNtfsRecovery::BuildUsedClusterMap()
{
    if (!isOpen) {
        return ResultInvalidHandle;
    }
    return UsedClusters.Build(Readers, Volume, Source);
}

ResultCode CFastNtfsRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    SearchCallback = callback;
    SearchContext = context;
    if (Store != nullptr) {
        Store->SetSearchCallback(callback, context);
    }
    return ResultSuccess;
}

std::int32_t CFastNtfsRecovery::SearchRecords(std::string_view extensionPattern,
                                              FileRecordList& outRecords)
{
    return Store != nullptr ? Store->SearchRecords(extensionPattern, outRecords) : 0;
}

NtfsDataReader CFastNtfsRecovery::DataReader()
{
    return {Source, Volume.BytesPerSector,
            [this](const FileRecord& record, std::span<std::uint8_t> buffer) {
                std::uint32_t size = 0;
                return Readers.ReadResidentData(record.EntrySector, buffer, size);
            },
            [this](const FileRecord& record, RunList& outRuns) {
                return Readers.ReadAttributeRuns(record.EntrySector, AttributeData, outRuns);
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
        return RestoreNtfsFile(reader, file, path, FileCallback, CallbackContext);
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
    if (Readers.ReadAttributeRuns(record.EntrySector, AttributeData, runs) != ResultSuccess ||
        runs.empty()) {
        return std::nullopt;
    }
    const auto lcn = static_cast<std::uint64_t>(runs.front().Offset);
    return SectorOfCluster(lcn, record.ClusterBytes, Volume.BytesPerSector) + record.PartitionStart;
}
