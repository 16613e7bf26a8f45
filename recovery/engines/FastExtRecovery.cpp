#include "recovery/engines/FastExtRecovery.h"

#include <utility>

ResultCode CFastExtRecovery::OpenImageFile(const std::filesystem::path& /*filePath*/,
                                           char16_t /*driveLetter*/)
{
    return ResultSuccess;
}

ResultCode CFastExtRecovery::Open(std::shared_ptr<ScanSource> source, char16_t /*driveLetter*/)
{
    m_source = std::move(source);
    return ResultSuccess;
}
