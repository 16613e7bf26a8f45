#include "recovery/EngineBase.h"

#include <utility>

ResultCode CEngineBase::OpenImageFile(const std::filesystem::path& filePath, char16_t driveLetter)
{
    if (IsOpen()) {
        return ResultSuccess;
    }
    std::shared_ptr<ScanSource> source;
    if (const ResultCode result = ScanSource::OpenImage(filePath, &source)) {
        return result;
    }
    return Open(std::move(source), driveLetter);
}

ResultCode CEngineBase::OpenPartition(std::uint32_t diskNumber,
                                      std::uint64_t startLba,
                                      std::uint64_t sectorCount,
                                      char16_t driveLetter)
{
    if (IsOpen()) {
        return ResultSuccess;
    }
    std::shared_ptr<ScanSource> source;
    if (const ResultCode result =
            ScanSource::OpenDriveRange(diskNumber, startLba, sectorCount, &source)) {
        return result;
    }
    return Open(std::move(source), driveLetter);
}

ResultCode CEngineBase::SetCallbacks(ProgressCallback /*scanCallback*/,
                                     FileProgressCallback /*fileCallback*/,
                                     void* /*context*/,
                                     std::int32_t /*progressRange*/)
{
    return ResultSuccess;
}

ResultCode CEngineBase::Scan(const std::string* /*logName*/)
{
    return ResultSuccess;
}

ResultCode CEngineBase::ListChildren(const FileRecord* /*parentRecord*/,
                                     std::uint32_t /*depth*/,
                                     FileRecordList& /*outRecords*/)
{
    return ResultSuccess;
}

ResultCode CEngineBase::CountChildren(const FileRecord* /*parentRecord*/,
                                      std::uint32_t /*depth*/,
                                      std::uint32_t& /*outCount*/)
{
    return ResultSuccess;
}

std::uint64_t CEngineBase::GetRecordCount() const
{
    return 0;
}

ResultCode CEngineBase::GetRecordPath(const FileRecord* /*record*/, std::string& /*outPath*/)
{
    return ResultSuccess;
}

ResultCode CEngineBase::RestoreRecord(const FileRecord* /*record*/,
                                      const std::filesystem::path& /*destPath*/,
                                      std::uint32_t /*baseDepth*/)
{
    return ResultSuccess;
}

std::int32_t CEngineBase::NextFreeRange(std::uint64_t& /*inOutSector*/,
                                        std::uint64_t& /*outLength*/)
{
    return 0;
}

ResultCode CEngineBase::SetSearchCallback(SearchProgressCallback /*callback*/, void* /*context*/)
{
    return ResultSuccess;
}

std::int32_t CEngineBase::SearchRecords(std::string_view /*extensionPattern*/,
                                        FileRecordList& /*outRecords*/)
{
    return 0;
}

ResultCode CEngineBase::BuildUsedClusterMap()
{
    return ResultSuccess;
}

ResultCode CEngineBase::ReadRecordData(const FileRecord* /*record*/,
                                       std::filesystem::path& /*tempPathInOut*/,
                                       std::uint8_t* /*buffer*/,
                                       std::uint32_t& /*inOutSize*/,
                                       PreviewProgressCallback /*progressFn*/,
                                       void* /*context*/)
{
    return ResultSuccess;
}
