// The carver as an engine: keeps the records of files that were found by their content, restores and previews them. It
// has no scan of its own; the deep pass shows it one sector after the other.
#pragma once

#include "recovery/StoreEngine.h"
#include "recovery/carving/CarveDriver.h"

#include <memory>
#include <optional>

// One thread at a time, as every engine. Carving goes through the process-wide CarveContext, restoring does not.
class CFileTypeRecovery : public CStoreEngine
{
public:
    using CStoreEngine::CStoreEngine;

    // Makes a new store, replacing the one before.
    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;
    // Goes on with the store of an earlier scan, by its name.
    [[nodiscard]] ResultCode ReopenStore(std::string_view logName,
                                         char16_t driveLetter,
                                         std::shared_ptr<ScanSource> source,
                                         std::int32_t sectorSize);
    // The same, cut to its first records; the count goes on after them.
    [[nodiscard]] ResultCode ReopenStoreCut(std::string_view logName,
                                            char16_t driveLetter,
                                            std::shared_ptr<ScanSource> source,
                                            std::int32_t sectorSize,
                                            std::uint32_t records);

    // Tries the table on the sector at lba. 0: a file was recorded, inOutFilesFound counted up, and outStep is how
    // many sectors the pass goes on by. Otherwise as TrySignatureTable, with outStep 1 and no record.
    [[nodiscard]] ResultCode CarveAtSector(ByteView sector,
                                           std::uint64_t lba,
                                           const CarveProgress& progress,
                                           SectorSource& passSource,
                                           std::int32_t sectorSize,
                                           std::int64_t& outStep,
                                           std::int64_t& inOutFilesFound);

    ResultCode SetCallbacks(ProgressCallback scanCallback,
                            FileProgressCallback fileCallback,
                            void* context,
                            std::int32_t progressRange) override;
    // Carved files have no path: 0, nothing written.
    ResultCode GetRecordPath(const FileRecord* record, std::string& outPath) override;
    // The folder of destPath is made first, whatever the record is.
    ResultCode RestoreRecord(const FileRecord* record,
                             const std::filesystem::path& destPath,
                             std::uint32_t baseDepth) override;
    // Copies the record's sectors to destPath, whose folder must be there. What was written of a failed copy stays.
    [[nodiscard]] ResultCode WriteCarvedFile(const FileRecord* record,
                                             const std::filesystem::path& destPath);

protected:
    // All files lie in the root; any other parent gives 0 and nothing.
    ResultCode KeyOf(const FileRecord* parentRecord,
                     std::uint32_t depth,
                     KeyUse use,
                     std::optional<std::uint64_t>* outKey) const override;
    std::unique_ptr<IRecordReader> MakeReader(const FileRecord& record) override;

private:
    void UseSource(char16_t driveLetter, std::shared_ptr<ScanSource> source);

    std::int32_t m_sectorSize = 512;  // as the pass gave it last
};
