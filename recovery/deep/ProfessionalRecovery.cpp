#include "recovery/deep/ProfessionalRecovery.h"

#include "recovery/deep/CarvedDoubles.h"
#include "recovery/metadata/FatClusters.h"
#include "recovery/ntfs/FastNtfsRecovery.h"
#include "storage/ByteReader.h"

#include <iterator>
#include <utility>

namespace {

constexpr std::int32_t FastRange = 9;
constexpr std::int32_t PassRange = 90;

void Append(FileRecordList& records, const FileRecordList& more)
{
    records.insert(records.end(), more.begin(), more.end());
}

}  // namespace

CProfessionalRecovery::CProfessionalRecovery(FastEngineMaker maker) : m_makeFast(std::move(maker))
{
}

ResultCode CProfessionalRecovery::OpenImageFile(const std::filesystem::path& filePath,
                                                char16_t letter)
{
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(filePath, opened)) {
        return result;
    }
    m_driveLetter = letter;
    const std::uint64_t sectors = opened.sizeBytes / static_cast<std::uint64_t>(m_sectorSize);
    m_target = {ImageDiskNumber, 0, sectors, filePath};
    // Their failure shows in the reads; the quick engine and the analysers tell theirs themselves.
    (void)m_source.OpenImage(filePath);
    (void)m_aheadSource.OpenImage(filePath);
    m_resumeEntry = {};
    m_resumeValid = ScanLogDirectory::Instance().FindScan(m_target, m_resumeEntry);
    (void)m_fat.OpenImageFile(filePath, letter);
    const ResultCode result = m_ntfs.OpenImageFile(filePath, letter);
    m_fast = m_makeFast.forImage ? m_makeFast.forImage(filePath, letter) : nullptr;
    return result;
}

ResultCode CProfessionalRecovery::OpenPartition(std::uint32_t diskNumber,
                                                std::uint64_t startLba,
                                                std::uint64_t sectorCount,
                                                char16_t letter)
{
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, opened)) {
        return result;
    }
    m_driveLetter = letter;
    m_sectorSize = static_cast<std::int32_t>(opened.sectorSize);
    m_target = {diskNumber, startLba, sectorCount, {}};
    (void)m_source.OpenDrive(diskNumber);  // as above
    (void)m_aheadSource.OpenDrive(diskNumber);
    m_resumeEntry = {};
    m_resumeValid = ScanLogDirectory::Instance().FindScan(m_target, m_resumeEntry);
    (void)m_fat.OpenPartition(diskNumber, startLba, sectorCount, letter);
    const ResultCode result = m_ntfs.OpenPartition(diskNumber, startLba, sectorCount, letter);
    m_fast = m_makeFast.forPartition
                 ? m_makeFast.forPartition(diskNumber, startLba, sectorCount, letter)
                 : nullptr;
    return result;
}

void CProfessionalRecovery::DiscardResumableScan()
{
    m_resumeValid = false;
    (void)ScanLogDirectory::Instance().DeleteLog(
        LogFolderOf(m_resumeEntry));  // what stays is not listed any more
}

ResultCode CProfessionalRecovery::SetCallbacks(ProgressCallback scan,
                                               FileProgressCallback file,
                                               void* context,
                                               std::int32_t /*progressRange*/)
{
    m_scanCallback = scan;
    m_callbackContext = context;
    if (m_fast != nullptr) {
        m_fast->SetCallbacks(scan, file, context, FastRange);
    }
    m_fat.SetCallbacks(scan, file, context, PassRange);
    m_ntfs.SetCallbacks(scan, file, context, PassRange);
    m_carver.SetCallbacks(scan, file, context, PassRange);
    return ResultSuccess;
}

// The engine that wrote a record; null when there is none such.
IFileRecoveryParse* CProfessionalRecovery::EngineOf(const FileRecord& record)
{
    switch (record.EngineKind) {
    case EngineKindFastNtfs:
    case EngineKindFastFat:
        return m_fast.get();
    case EngineKindProfessionalNtfs:
        return &m_ntfs;
    case EngineKindProfessionalFat:
        return &m_fat;
    case EngineKindCarved:
        return &m_carver;
    default:
        return nullptr;
    }
}

ResultCode CProfessionalRecovery::ListChildren(const FileRecord* parentRecord,
                                               std::uint32_t depth,
                                               FileRecordList& outRecords)
{
    ResultCode result = ResultSuccess;
    if (parentRecord != nullptr) {
        IFileRecoveryParse* engine = EngineOf(*parentRecord);
        result = engine != nullptr ? engine->ListChildren(parentRecord, depth, outRecords)
                                   : ResultSuccess;
    } else if (depth != 0) {
        return ResultInvalidParameter;
    } else {
        for (IFileRecoveryParse* engine : {m_fast.get(), static_cast<IFileRecoveryParse*>(&m_fat),
                                           static_cast<IFileRecoveryParse*>(&m_ntfs),
                                           static_cast<IFileRecoveryParse*>(&m_carver)}) {
            FileRecordList records;
            const ResultCode listed =
                engine != nullptr ? engine->ListChildren(nullptr, 0, records) : ResultSuccess;
            result = listed != ResultSuccess ? listed : result;
            Append(outRecords, records);
        }
    }
    SortRecords(outRecords);
    return result;
}

ResultCode CProfessionalRecovery::CountChildren(const FileRecord* parentRecord,
                                                std::uint32_t depth,
                                                std::uint32_t& outCount)
{
    outCount = 0;
    if (parentRecord != nullptr) {
        IFileRecoveryParse* engine = EngineOf(*parentRecord);
        return engine != nullptr ? engine->CountChildren(parentRecord, depth, outCount)
                                 : ResultSuccess;
    }
    if (depth != 0) {
        return ResultInvalidParameter;
    }
    ResultCode result = ResultSuccess;
    for (IFileRecoveryParse* engine :
         {m_fast.get(), static_cast<IFileRecoveryParse*>(&m_fat),
          static_cast<IFileRecoveryParse*>(&m_ntfs), static_cast<IFileRecoveryParse*>(&m_carver)}) {
        std::uint32_t count = 0;
        const ResultCode counted =
            engine != nullptr ? engine->CountChildren(nullptr, 0, count) : ResultSuccess;
        result = counted != ResultSuccess ? counted : result;
        outCount += count;
    }
    return result;
}

std::uint64_t CProfessionalRecovery::GetRecordCount() const
{
    const std::uint64_t quick = m_fast != nullptr ? m_fast->GetRecordCount() : 0;
    return quick + m_fat.GetRecordCount() + m_ntfs.GetRecordCount() + m_carver.GetRecordCount();
}

ResultCode CProfessionalRecovery::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    IFileRecoveryParse* engine = EngineOf(*record);
    return engine != nullptr ? engine->GetRecordPath(record, outPath) : ResultSuccess;
}

ResultCode CProfessionalRecovery::RestoreRecord(const FileRecord* record,
                                                const std::filesystem::path& destPath,
                                                std::uint32_t baseDepth)
{
    IFileRecoveryParse* engine = record != nullptr ? EngineOf(*record) : nullptr;
    return engine != nullptr ? engine->RestoreRecord(record, destPath, baseDepth)
                             : ResultInvalidParameter;
}

std::int32_t CProfessionalRecovery::NextFreeRange(std::uint64_t& /*inOutSector*/,
                                                  std::uint64_t& /*outLength*/)
{
    return 0;
}

ResultCode CProfessionalRecovery::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
    if (m_fast != nullptr) {
        m_fast->SetSearchCallback(callback, context);
    }
    m_fat.SetSearchCallback(callback, context);
    m_ntfs.SetSearchCallback(callback, context);
    m_carver.SetSearchCallback(callback, context);
    return ResultSuccess;
}

std::optional<std::uint64_t> CProfessionalRecovery::FirstDataSector(const FileRecord& record)
{
    if (record.EngineKind == EngineKindProfessionalNtfs) {
        return m_ntfs.FirstDataSector(record);
    }
    if (record.EngineKind == EngineKindFastNtfs) {
        auto* quick = dynamic_cast<CFastNtfsRecovery*>(m_fast.get());
        return quick != nullptr ? quick->FirstDataSector(record) : std::nullopt;
    }
    const std::uint64_t dataSector = record.PartitionStart + record.DataStart;
    const std::uint32_t sectorsPerCluster =
        record.ClusterBytes / static_cast<std::uint32_t>(m_sectorSize);
    return SectorOfFatCluster({dataSector, 0, sectorsPerCluster}, record.NodeId);
}

std::int32_t CProfessionalRecovery::SearchRecords(std::string_view extensionPattern,
                                                  FileRecordList& outRecords)
{
    std::int32_t result = 0;
    FileRecordList known;
    for (IFileRecoveryParse* engine : {m_fast.get(), static_cast<IFileRecoveryParse*>(&m_fat),
                                       static_cast<IFileRecoveryParse*>(&m_ntfs)}) {
        FileRecordList records;
        if (engine != nullptr && engine->SearchRecords(extensionPattern, records) != 0) {
            result = 1;
        }
        Append(known, records);
    }
    FileRecordList carved;
    if (m_carver.SearchRecords(extensionPattern, carved) != 0) {
        result = 1;
    }
    DropCarvedDoubles(
        known, [this](const FileRecord& record) { return FirstDataSector(record); }, carved);
    Append(outRecords, known);
    Append(outRecords, carved);
    SortRecords(outRecords);
    return result;
}

ResultCode CProfessionalRecovery::BuildUsedClusterMap()
{
    return ResultSuccess;
}

ResultCode CProfessionalRecovery::ReadRecordData(const FileRecord* record,
                                                 std::filesystem::path& tempPathInOut,
                                                 std::uint8_t* buffer,
                                                 std::uint32_t& inOutSize,
                                                 PreviewProgressCallback progressFn,
                                                 void* context)
{
    IFileRecoveryParse* engine = record != nullptr ? EngineOf(*record) : nullptr;
    return engine != nullptr ? engine->ReadRecordData(record, tempPathInOut, buffer, inOutSize,
                                                      progressFn, context)
                             : ResultInvalidParameter;
}
