// The carver as an engine: keeps the records of files that were found by their content, restores and previews them. It
// has no scan of its own; the deep pass shows it one sector after the other.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanRecordStore.h"
#include "recovery/carving/CarveDriver.h"
#include "storage/SectorSource.h"

#include <memory>

// One thread at a time, as every engine. Carving goes through the process-wide CarveContext, restoring does not.
class CFileTypeRecovery : public IFileRecoveryParse
{
public:
    // Both open the source and make a new store, replacing the one before.
    ResultCode OpenImageFile(const std::filesystem::path& filePath, char16_t driveLetter) override;
    ResultCode OpenPartition(std::uint32_t diskNumber,
                             std::uint64_t startLba,
                             std::uint64_t sectorCount,
                             char16_t driveLetter) override;
    // Go on with the store of an earlier scan, by its name.
    [[nodiscard]] ResultCode ReopenStore(std::string_view logName,
                                         char16_t driveLetter,
                                         const std::filesystem::path& imagePath,
                                         std::int32_t sectorSize);
    [[nodiscard]] ResultCode ReopenStore(std::string_view logName,
                                         char16_t driveLetter,
                                         std::uint32_t diskNumber,
                                         std::int32_t sectorSize);

    // Tries the table on the sector at lba. 0: a file was recorded, inOutFilesFound counted up, and outStep is how
    // many sectors the pass goes on by. Otherwise as TrySignatureTable, with outStep 1 and no record.
    [[nodiscard]] ResultCode CarveAtSector(ByteView sector,
                                           std::uint64_t lba,
                                           const CarveProgress& progress,
                                           SectorSource& passSource,
                                           std::int32_t sectorSize,
                                           std::int64_t& outStep,
                                           std::int64_t& inOutFilesFound);

    // Writes out what the store holds in memory, before a position is saved that counts on it.
    void FlushStore();

    ResultCode SetCallbacks(ProgressCallback scanCallback,
                            FileProgressCallback fileCallback,
                            void* context,
                            std::int32_t progressRange) override;
    // Nothing to scan alone: 0.
    ResultCode Scan(const std::string* logName) override;
    // All files lie in the root; any other parent gives 0 and nothing.
    ResultCode ListChildren(const FileRecord* parentRecord,
                            std::uint32_t depth,
                            FileRecordList& outRecords) override;
    ResultCode CountChildren(const FileRecord* parentRecord,
                             std::uint32_t depth,
                             std::uint32_t& outCount) override;
    std::uint64_t GetRecordCount() const override;
    // Carved files have no path: 0, nothing written.
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

    // Copies the record's sectors to destPath, whose folder must be there. What was written of a failed copy stays.
    [[nodiscard]] ResultCode WriteCarvedFile(const FileRecord* record,
                                             const std::filesystem::path& destPath);

private:
    ResultCode MakeStore(std::string_view logName);
    ResultCode CopyToFile(const FileRecord& record, const std::filesystem::path& destPath);
    ResultCode PreviewToFile(const FileRecord& record,
                             std::filesystem::path& outPath,
                             PreviewProgressCallback progressFn,
                             void* context);
    ResultCode PreviewToBuffer(const FileRecord& record,
                               std::uint8_t* buffer,
                               std::uint32_t capacity,
                               std::uint32_t& outCopied,
                               PreviewProgressCallback progressFn,
                               void* context);

    char16_t m_driveLetter = 0;
    std::int32_t m_sectorSize = 512;  // as the pass gave it last
    SectorSource m_source;
    std::unique_ptr<ScanRecordStore> m_store;  // null until opened
    FileProgressCallback m_fileCallback = nullptr;
    void* m_callbackContext = nullptr;
};
