#include "recovery/ntfs/ProfessionalNtfsRecovery.h"

#include "recovery/FileSystemRecognition.h"
#include "recovery/RestoreSupport.h"
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
    StartLba = startLba;
    SectorsPerRecord = BytesPerSector == 512 ? 2 : 1;
    RecordSize = SectorsPerRecord * BytesPerSector;
    SectorsPerCluster = DefaultSectorsPerCluster(sectorCount, BytesPerSector);
    (void)Codec.SetSectorSize(BytesPerSector);
    std::array<std::uint8_t, BootBytes> bytes = {};
    if (const ResultCode result =
            ReadWhole(*opened.reader, StartLba * BytesPerSector, bytes.data(), BootBytes)) {
        return result;
    }
    Mfts.Clear();
    const ByteView boot = ByteView(std::span<const std::uint8_t>(bytes)).Sub(0, 512);
    if (IsNtfsBootSector(boot)) {
        const std::uint64_t mftLba = boot.U64(48) * boot.U8(13) + StartLba;
        RunList runs;
        (void)ReadRunsAt(mftLba, runs);  // without runs the table is entered all the same
        Mfts.Enter(mftLba, runs);
    }
    return ResultSuccess;
}

ResultCode CProfessionalNtfsRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                                    char16_t driveLetter)
{
    if (isOpen) {
        return ResultSuccess;
    }
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    isOpen = true;
    Origin.DriveLetter = driveLetter;
    const ResultCode result = Source.OpenImage(filePath);
    const ResultCode booted = OpenAt(opened, 0, opened.sizeBytes / BytesPerSector);
    return booted != ResultSuccess ? booted : result;
}

ResultCode CProfessionalNtfsRecovery::OpenPartition(std::uint32_t diskNumber,
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
    isOpen = true;
    Origin.DriveLetter = driveLetter;
    BytesPerSector = opened.sectorSize != 0 ? opened.sectorSize : 512;
    const ResultCode result = Source.OpenDrive(diskNumber);
    const ResultCode booted = OpenAt(opened, startLba, sectorCount);
    return booted != ResultSuccess ? booted : result;
}

ResultCode CProfessionalNtfsRecovery::SetCallbacks(ProgressCallback /*scanCallback*/,
                                                   FileProgressCallback fileCallback,
                                                   void* context,
                                                   std::int32_t /*progressRange*/)
{
    FileCallback = fileCallback;
    CallbackContext = context;
    return ResultSuccess;
}

ResultCode CProfessionalNtfsRecovery::OpenRecordStore(std::string_view logName)
{
    FolderWorkList.clear();
    listed.clear();
    depths.clear();
    Store = std::make_unique<ScanRecordStore>();
    Store->SetSearchCallback(SearchCallback, SearchContext);
    return Store->OpenStore(!logName.empty() ? std::string(logName)
                                             : ScanRecordStore::MakeName("Pro_Ntfs_", StartLba));
}

ResultCode CProfessionalNtfsRecovery::ReadRecordAt(std::uint64_t lba, RecordBuffer& outBuffer)
{
    outBuffer.bytes.fill(0);
    const auto sectorSize = static_cast<std::int32_t>(BytesPerSector);
    std::int32_t sectorsRead = 0;
    return Source.ReadSectors(outBuffer.bytes.data(),
                              static_cast<std::int32_t>(RecordReadBytes) / sectorSize, lba,
                              sectorSize, &sectorsRead);
}

ResultCode CProfessionalNtfsRecovery::ReadRepairedRecord(std::uint64_t lba, RecordBuffer& outBuffer)
{
    if (const ResultCode result = ReadRecordAt(lba, outBuffer)) {
        return result;
    }
    return HasFileMagic(outBuffer.View()) ? Codec.ApplyFixups(outBuffer.bytes) : ResultNoFileRecord;
}

// The runs of the data attribute of the record at lba. Attribute lists are not followed.
ResultCode CProfessionalNtfsRecovery::ReadRunsAt(std::uint64_t lba, RunList& outRuns)
{
    RecordBuffer buffer;
    if (const ResultCode result = ReadRepairedRecord(lba, buffer)) {
        return result;
    }
    AttributeWalk walk(buffer.View(), RecordSize, RunReaderRules);
    while (walk.Next()) {
        if (walk.Type() == AttributeAttributeList) {
            return ResultInvalidParameter;
        }
        if (walk.Type() == AttributeData) {
            Codec.DecodeRunList(walk.Attribute(), outRuns);
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
    if (FirstAttributeOf(buffer.View()) >= RecordSize) {
        return ResultInvalidParameter;
    }
    AttributeWalk walk(buffer.View(), RecordSize, ResidentReaderRules);
    while (walk.Next() && walk.Type() != AttributeAttributeList) {
        if (walk.Type() == AttributeData) {
            Codec.DecodeRunList(walk.Attribute(), outRuns);
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
    if (FirstAttributeOf(bytes.View()) >= RecordSize) {
        return ResultInvalidParameter;
    }
    ByteView value;
    const ResultCode result = FindResidentData(bytes.View(), RecordSize, RecordSize, value);
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
    return SectorOfCluster(lcn, record.ClusterBytes, BytesPerSector) + record.PartitionStart;
}

ResultCode CProfessionalNtfsRecovery::Scan(const std::string* /*logName*/)
{
    return ResultSuccess;
}

ResultCode CProfessionalNtfsRecovery::ListChildren(const FileRecord* parentRecord,
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

// Unlike the listing, the count takes the root for a parent without a number.
ResultCode CProfessionalNtfsRecovery::CountChildren(const FileRecord* parentRecord,
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
    const std::uint32_t folder = node != 0 ? node : RootRecordNumber;
    return Store->CountChildren(ScanRecordStore::MakeKey(depth, folder), outCount);
}

std::uint64_t CProfessionalNtfsRecovery::GetRecordCount() const
{
    return Store != nullptr ? Store->GetRecordCount() : 0;
}

ResultCode CProfessionalNtfsRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return Store != nullptr ? Store->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

ResultCode CProfessionalNtfsRecovery::RestoreRecord(const FileRecord* record,
                                                    const std::filesystem::path& destPath,
                                                    std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const NtfsDataReader reader = {
        Source, BytesPerSector,
        [this](const FileRecord& file, std::span<std::uint8_t> buffer) {
            return ReadResidentData(file, buffer);
        },
        [this](const FileRecord& file, RunList& outRuns) { return ReadRecordRuns(file, outRuns); }};
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

std::int32_t CProfessionalNtfsRecovery::NextFreeRange(std::uint64_t& /*inOutSector*/,
                                                      std::uint64_t& /*outLength*/)
{
    return 0;
}

ResultCode CProfessionalNtfsRecovery::SetSearchCallback(SearchProgressCallback callback,
                                                        void* context)
{
    SearchCallback = callback;
    SearchContext = context;
    if (Store == nullptr) {
        return ResultInvalidParameter;
    }
    Store->SetSearchCallback(callback, context);
    return ResultSuccess;
}

std::int32_t CProfessionalNtfsRecovery::SearchRecords(std::string_view extensionPattern,
                                                      FileRecordList& outRecords)
{
    return Store != nullptr ? Store->SearchRecords(extensionPattern, outRecords) : 0;
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
        Source, BytesPerSector,
        [this](const FileRecord& file, std::span<std::uint8_t> bytes) {
            return ReadResidentData(file, bytes);
        },
        [this](const FileRecord& file, RunList& outRuns) { return ReadRecordRuns(file, outRuns); }};
    return PreviewNtfsFile(reader, *record, {tempPathInOut, buffer, inOutSize, progressFn, context},
                           false);
}

void CProfessionalNtfsRecovery::FlushStore()
{
    if (Store != nullptr) {
        (void)Store->FlushStore();  // what could not be written is not found
    }
}
