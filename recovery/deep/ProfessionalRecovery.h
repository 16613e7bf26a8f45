// The deep engine: a quick engine reads what the file system still knows, then one pass over the sectors that it does
// not use (or over all) shows each to the analyser that it fits. Four stores in one log folder, searched as one.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ResumableScan.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/carving/FileTypeRecovery.h"
#include "recovery/fat/ProfessionalFatRecovery.h"
#include "recovery/ntfs/ProfessionalNtfsRecovery.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <memory>

// Makes the quick engine that fits a target, opened; null where none does. The deep engine does not know how.
struct FastEngineMaker
{
    std::function<std::unique_ptr<IFileRecoveryParse>(const std::filesystem::path& path,
                                                      char16_t letter)>
        forImage;
    std::function<std::unique_ptr<IFileRecoveryParse>(std::uint32_t diskNumber,
                                                      std::uint64_t startLba,
                                                      std::uint64_t sectorCount,
                                                      char16_t letter)>
        forPartition;
};

// Opened once, scanned once, then queried. Only one in a process may scan at a time: the carver's state is shared.
class CProfessionalRecovery : public IFileRecoveryParse, public IResumableScan
{
public:
    explicit CProfessionalRecovery(FastEngineMaker maker);

    ResultCode OpenImageFile(const std::filesystem::path& filePath, char16_t driveLetter) override;
    ResultCode OpenPartition(std::uint32_t diskNumber,
                             std::uint64_t startLba,
                             std::uint64_t sectorCount,
                             char16_t driveLetter) override;
    bool HasResumableScan() const override { return m_resumeValid; }
    const ScanLogEntry& ResumableScan() const override { return m_resumeEntry; }
    void DiscardResumableScan() override;
    const std::filesystem::path& LogFolder() const override { return m_logFolder; }

    // The range is ignored: the pass takes 90, the quick engine 9.
    ResultCode SetCallbacks(ProgressCallback scanCallback,
                            FileProgressCallback fileCallback,
                            void* context,
                            std::int32_t progressRange) override;
    // The whole pipeline, new or resumed; the name is ignored.
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
    // All four stores; a carved file that a metadata record covers is left out.
    std::int32_t SearchRecords(std::string_view extensionPattern,
                               FileRecordList& outRecords) override;
    ResultCode BuildUsedClusterMap() override;
    ResultCode ReadRecordData(const FileRecord* record,
                              std::filesystem::path& tempPathInOut,
                              std::uint8_t* buffer,
                              std::uint32_t& inOutSize,
                              PreviewProgressCallback progressFn,
                              void* context) override;

private:
    // How far the pass is.
    struct Pass
    {
        bool haveFreeMap = false;
        ScanPosition at;
        std::uint64_t sectorsTotal = 0;
        std::uint64_t filesBase = 0;  // found before a resume
        std::int32_t secondsLeft = -1;
        std::int64_t skip = 0;
        std::uint64_t startTick = 0;
        std::uint64_t lastTick = 0;
    };

    IFileRecoveryParse* EngineOf(const FileRecord& record);
    std::optional<std::uint64_t> FirstDataSector(const FileRecord& record);
    // DeepScan.cpp
    [[nodiscard]] ResultCode RunFastPhase(bool isResume, Pass& pass);
    void OpenStores(bool isResume);
    std::string StoredName(std::string_view prefix) const;
    void FindFirstRange(Pass& pass);
    bool NextRange(std::uint64_t& inOutSector, std::uint64_t& outLength);
    [[nodiscard]] ResultCode RunPass(Pass& pass);
    [[nodiscard]] ResultCode RunRange(Pass& pass, class BlockReader& reader);
    [[nodiscard]] ResultCode ReportBlock(Pass& pass);

    FastEngineMaker m_makeFast;
    ScanIdentity m_target;
    char16_t m_driveLetter = 0;
    std::int32_t m_sectorSize = 512;
    SectorSource m_source;
    SectorSource m_aheadSource;  // a second opening for reading ahead
    CProfessionalFatRecovery m_fat;
    CProfessionalNtfsRecovery m_ntfs;
    CFileTypeRecovery m_carver;
    std::unique_ptr<IFileRecoveryParse> m_fast;
    bool m_resumeValid = false;
    ScanLogEntry m_resumeEntry;
    std::filesystem::path m_logFolder;

    ProgressCallback m_scanCallback = nullptr;
    void* m_callbackContext = nullptr;
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;
};
