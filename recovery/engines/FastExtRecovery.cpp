#include "recovery/engines/FastExtRecovery.h"

ResultCode CFastExtRecovery::OpenImageFile(const std::filesystem::path& /*filePath*/,
                                           char16_t /*driveLetter*/)
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::OpenPartition(std::uint32_t diskNumber,
                                           std::uint64_t /*startLba*/,
                                           std::uint64_t /*sectorCount*/,
                                           char16_t /*driveLetter*/)
{
    return OpenDriveSource(diskNumber, m_drive);
}

ResultCode CFastExtRecovery::SetCallbacks(ProgressCallback /*scanCallback*/,
                                          FileProgressCallback /*fileCallback*/,
                                          void* /*context*/,
                                          std::int32_t /*progressRange*/)
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::Scan(const std::string* /*logName*/)
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::ListChildren(const FileRecord* /*parentRecord*/,
                                          std::uint32_t /*depth*/,
                                          FileRecordList& /*outRecords*/)
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::CountChildren(const FileRecord* /*parentRecord*/,
                                           std::uint32_t /*depth*/,
                                           std::uint32_t& /*outCount*/)
{
    return ResultSuccess;
}

std::uint64_t CFastExtRecovery::GetRecordCount() const
{
    return 0;
}

ResultCode CFastExtRecovery::GetRecordPath(const FileRecord* /*record*/, std::string& /*outPath*/)
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::RestoreRecord(const FileRecord* /*record*/,
                                           const std::filesystem::path& /*destPath*/,
                                           std::uint32_t /*baseDepth*/)
{
    return ResultSuccess;
}

std::int32_t CFastExtRecovery::NextFreeRange(std::uint64_t& /*inOutSector*/,
                                             std::uint64_t& /*outLength*/)
{
    return 0;
}

ResultCode CFastExtRecovery::SetSearchCallback(SearchProgressCallback /*callback*/,
                                               void* /*context*/)
{
    return ResultSuccess;
}

std::int32_t CFastExtRecovery::SearchRecords(std::string_view /*extensionPattern*/,
                                             FileRecordList& /*outRecords*/)
{
    return 0;
}

ResultCode CFastExtRecovery::BuildUsedClusterMap()
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::ReadRecordData(const FileRecord* /*record*/,
                                            std::filesystem::path& /*tempPathInOut*/,
                                            std::uint8_t* /*buffer*/,
                                            std::uint32_t& /*inOutSize*/,
                                            PreviewProgressCallback /*progressFn*/,
                                            void* /*context*/)
{
    return ResultSuccess;
}
