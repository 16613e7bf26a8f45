// The quick engine for NTFS: reads the master file table through its own run list, records every file whose record is
// marked deleted, and the folders above those files. A volume whose table is gone yields nothing here.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanRecordStore.h"
#include "recovery/metadata/NtfsVolume.h"
#include "recovery/ntfs/NtfsAncestors.h"
#include "recovery/ntfs/NtfsClusterMap.h"
#include "recovery/ntfs/NtfsFileNames.h"
#include "recovery/ntfs/NtfsReaders.h"
#include "recovery/ntfs/NtfsRunCopy.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

// Also the deep pass's first stage, which takes the free ranges from it.
class CFastNtfsRecovery : public IFileRecoveryParse
{
public:
    ResultCode OpenImageFile(const std::filesystem::path& filePath, char16_t driveLetter) override;
    ResultCode OpenPartition(std::uint32_t diskNumber,
                             std::uint64_t startLba,
                             std::uint64_t sectorCount,
                             char16_t driveLetter) override;
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

    // The sector of a record's first data; none when its record tells of no runs.
    std::optional<std::uint64_t> FirstDataSector(const FileRecord& record);

private:
    // A record being looked at: the bytes from its start to the end of the buffer that it was read into.
    struct RecordInHand
    {
        std::span<std::uint8_t> bytes;
        std::uint64_t sector = 0;  // where it was read; of the folder pass 0
        bool folderPass = false;
        std::uint32_t wantedNumber = 0;  // of the folder pass
    };
    struct ScanClock;

    [[nodiscard]] ResultCode ReadBoot(const OpenedSource& opened, std::uint64_t startLba);
    void FinishOpen();
    [[nodiscard]] ResultCode
    KeyOf(const FileRecord* parentRecord, std::uint32_t depth, std::uint64_t* outKey) const;
    NtfsDataReader DataReader();

    // FastNtfsScan.cpp
    [[nodiscard]] ResultCode ScanMft();
    [[nodiscard]] ResultCode ScanRun(const NtfsRun& run, std::uint64_t lba, ScanClock& clock);
    [[nodiscard]] ResultCode ScanMftChunk(std::uint64_t firstSector, std::uint64_t sectors);
    void ScanFolders();
    ResultCode Report(std::int32_t progress, std::int32_t secondsLeft) const;
    ResultCode ProcessRecord(const RecordInHand& inHand);
    bool TakeFileName(const RecordInHand& inHand, ByteView attribute, FileRecord*& current);
    FileRecord& MakeRecord(const RecordInHand& inHand, ByteView attribute);
    bool CheckFileHead(const FileRecord& record, const RecordInHand& inHand);
    bool CheckFirstSector(const FileRecord& record, const RunList& runs);

    NtfsVolume m_volume;
    NtfsRecordOrigin m_origin;
    bool m_isOpen = false;
    SectorSource m_source;
    NtfsReaders m_readers{m_source, m_volume};
    NtfsAncestors m_ancestors{m_readers};
    NtfsClusterMap m_usedClusters;
    std::vector<std::uint8_t> m_chunkBuffer;
    std::unique_ptr<ScanRecordStore> m_store;

    std::int32_t m_progressRange = 100;
    ProgressCallback m_scanCallback = nullptr;
    FileProgressCallback m_fileCallback = nullptr;
    void* m_callbackContext = nullptr;
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;
};
