// What all engines share: they are opened over a source, and answer 0 to what they have nothing to say to.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "storage/ScanSource.h"

#include <memory>

// Both opening operations of the interface make a ScanSource; an engine inside another is handed that of the outer one.
class CEngineBase : public IFileRecoveryParse
{
public:
    ResultCode OpenImageFile(const std::filesystem::path& filePath, char16_t driveLetter) override;
    ResultCode OpenPartition(std::uint32_t diskNumber,
                             std::uint64_t startLba,
                             std::uint64_t sectorCount,
                             char16_t driveLetter) override;
    // Binds the engine to a source that is open already.
    [[nodiscard]] virtual ResultCode Open(std::shared_ptr<ScanSource> source,
                                          char16_t driveLetter) = 0;

    // 0, and nothing is touched.
    ResultCode SetCallbacks(ProgressCallback scanCallback,
                            FileProgressCallback fileCallback,
                            void* context,
                            std::int32_t progressRange) override;
    ResultCode Scan(const std::string* logName) override;
    ResultCode ListChildren(const FileRecord* parentRecord,
                            std::uint32_t depth,
                            FileRecordList& outRecords) override;
    ResultCode CountChildren(const FileRecord* parentRecord,
                             std::uint32_t depth,
                             std::uint32_t& outCount) override;
    std::uint64_t GetRecordCount() const override;
    ResultCode GetRecordPath(const FileRecord* record, std::string& outPath) override;
    ResultCode RestoreRecord(const FileRecord* record,
                             const std::filesystem::path& destPath,
                             std::uint32_t baseDepth) override;
    std::int32_t NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength) override;
    ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) override;
    std::int32_t SearchRecords(std::string_view extensionPattern,
                               FileRecordList& outRecords) override;
    ResultCode BuildUsedClusterMap() override;
    ResultCode ReadRecordData(const FileRecord* record,
                              std::filesystem::path& tempPathInOut,
                              std::uint8_t* buffer,
                              std::uint32_t& inOutSize,
                              PreviewProgressCallback progressFn,
                              void* context) override;

protected:
    // An engine that is open already answers 0 to a further opening and does nothing, not even look at the target.
    virtual bool IsOpen() const { return false; }
};
