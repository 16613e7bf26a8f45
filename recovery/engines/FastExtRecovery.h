// The quick engine's place for Ext volumes: it opens its drive and finds nothing. A deep scan of such a volume
// works like that of any unknown one.
#pragma once

#include "recovery/EngineBase.h"

class CFastExtRecovery : public CEngineBase
{
public:
    // Opens nothing: 0.
    ResultCode OpenImageFile(const std::filesystem::path& filePath, char16_t driveLetter) override;
    // Keeps the source.
    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;

private:
    std::shared_ptr<ScanSource> m_source;
};
