#include "recovery/carving/FileTypeRecovery.h"

#include "recovery/carving/CarveContext.h"

#include <utility>

namespace {

constexpr std::string_view StorePrefix = "File_Type_";

}  // namespace

void CFileTypeRecovery::UseSource(char16_t driveLetter, std::shared_ptr<ScanSource> source)
{
    m_driveLetter = driveLetter;
    m_scanSource = std::move(source);
    m_source.Open(m_scanSource);
}

ResultCode CFileTypeRecovery::Open(std::shared_ptr<ScanSource> source, char16_t driveLetter)
{
    UseSource(driveLetter, std::move(source));
    UseLogFolder();
    // An image's store is named after its first sector whatever range of it is read.
    const std::uint64_t first = m_scanSource->IsImage() ? 0 : m_scanSource->StartLba();
    return MakeStore(ScanRecordStore::MakeName(StorePrefix, first));
}

ResultCode CFileTypeRecovery::ReopenStore(std::string_view logName,
                                          char16_t driveLetter,
                                          std::shared_ptr<ScanSource> source,
                                          std::int32_t sectorSize)
{
    m_sectorSize = sectorSize;
    UseSource(driveLetter, std::move(source));
    return MakeStore(logName);
}

ResultCode CFileTypeRecovery::ReopenStoreCut(std::string_view logName,
                                             char16_t driveLetter,
                                             std::shared_ptr<ScanSource> source,
                                             std::int32_t sectorSize,
                                             std::uint32_t records)
{
    m_sectorSize = sectorSize;
    UseSource(driveLetter, std::move(source));
    return MakeStoreCut(logName, records);
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
                                           FileProgressCallback fileCallback,
                                           void* context,
                                           std::int32_t progressRange)
{
    CarveContext& carve = CarveContext::Instance();
    carve.scanCallback = scanCallback;
    carve.fileCallback = fileCallback;
    carve.callbackContext = context;
    carve.progressRange = progressRange;
    return CStoreEngine::SetCallbacks(scanCallback, fileCallback, context, progressRange);
}

ResultCode CFileTypeRecovery::KeyOf(const FileRecord* parentRecord,
                                    std::uint32_t depth,
                                    KeyUse /*use*/,
                                    std::optional<std::uint64_t>* outKey) const
{
    if (parentRecord == nullptr && depth == 0 && HasStore()) {
        *outKey = 0;
    }
    return ResultSuccess;
}

ResultCode CFileTypeRecovery::GetRecordPath(const FileRecord* /*record*/, std::string& /*outPath*/)
{
    return ResultSuccess;
}
