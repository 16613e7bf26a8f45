// The quick engine for FAT12, FAT16 and FAT32: walks the directory tree from the root and records the files that
// are deleted or lie in deleted folders. It reads what directories still say, and never looks at free space.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanRecordStore.h"
#include "recovery/fat/FatFolderDepth.h"
#include "recovery/fat/FatTable.h"
#include "recovery/fat/FirstSector.h"
#include "recovery/fat/UsedClusterMap.h"
#include "recovery/metadata/FatEntryNames.h"
#include "recovery/metadata/FatGeometry.h"
#include "storage/SectorSource.h"

#include <queue>

#include <cstdint>
#include <map>
#include <memory>
#include <unordered_set>
#include <vector>

// Also the deep pass's first stage, which takes the free ranges from it.
class CFastFatRecovery : public IFileRecoveryParse
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

private:
    // One folder being read: its name state, whose children its entries are, and where each entry stands.
    struct FolderWalk
    {
        LongNameGatherer longName;
        std::uint32_t folderId = 0;
        bool inDeleted = false;
        std::uint64_t entrySector = 0;
    };

    [[nodiscard]] ResultCode OpenSource(OpenedSource& opened);
    [[nodiscard]] ResultCode
    KeyOf(const FileRecord* parentRecord, std::uint32_t depth, std::uint64_t* outKey) const;

    // FastFatScan.cpp
    ResultCode Report(std::int32_t progress, std::int32_t secondsLeft) const;
    [[nodiscard]] ResultCode WalkAndRecord();
    [[nodiscard]] ResultCode WalkFolders();
    void RecordFolders();
    void WalkDirectory(std::uint32_t cluster);
    bool WalkUnit(ByteView unit, FolderWalk& walk);
    bool TakeEntry(ByteView entries, FolderWalk& walk);
    void TakeFolder(ByteView entry, FolderWalk& walk);
    void TakeFile(ByteView entry, FolderWalk& walk);
    void RecordFile(ByteView entry, const std::string& name, const FolderWalk& walk);
    std::uint32_t FirstClusterOfEntry(ByteView entry, const std::string* fileName);
    SectorReader FirstSectors();
    bool CheckHead(const FileRecord& record);
    void ClimbFrom(std::uint32_t folder);

    std::uint64_t m_startLba = 0;
    std::uint64_t m_sectorCount = 0;
    char16_t m_driveLetter = 0;
    bool m_isOpen = false;
    FatGeometry m_geometry;
    SectorSource m_source;
    FatTable m_table;
    FatFolderDepth m_folderDepth;
    UsedClusterMap m_usedClusters;
    HighWordSearch m_highWords;
    std::unique_ptr<ScanRecordStore> m_store;

    std::queue<std::uint32_t> m_folderQueue;
    // Folders seen, by first cluster. RecordNumber holds the parent's first cluster until the record is stored.
    std::map<std::uint32_t, FileRecord> m_folderMap;
    std::uint64_t m_folderMapVersion = 0;    // counts its changes
    std::vector<std::uint32_t> m_chainList;  // folders above found files, in order of first use
    std::unordered_set<std::uint32_t> m_chained;
    std::uint32_t m_lastClimbFolder = 0;
    std::uint64_t m_lastClimbVersion = UINT64_MAX;

    ProgressCallback m_scanCallback = nullptr;
    FileProgressCallback m_fileCallback = nullptr;
    void* m_callbackContext = nullptr;
    std::int32_t m_progressRange = 100;
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;
};
