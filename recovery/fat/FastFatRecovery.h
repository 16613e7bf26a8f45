// The quick engine for FAT12, FAT16 and FAT32: walks the directory tree from the root and records the files that
// are deleted or lie in deleted folders. It reads what directories still say, and never looks at free space.
#pragma once

#include "recovery/StoreEngine.h"
#include "recovery/fat/FatFolderDepth.h"
#include "recovery/fat/FatTable.h"
#include "recovery/fat/FirstSector.h"
#include "recovery/fat/UsedClusterMap.h"
#include "recovery/metadata/FatEntryNames.h"
#include "recovery/metadata/FatGeometry.h"

#include <queue>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

// Also the deep pass's first stage, which takes the free ranges from it.
class CFastFatRecovery : public CStoreEngine
{
public:
    using CStoreEngine::CStoreEngine;

    // Fails where no FAT boot sector stands, and the engine stays closed.
    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;
    ResultCode Scan(const std::string* logName) override;
    std::int32_t NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength) override;
    // 0 without a store too.
    ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) override;
    ResultCode BuildUsedClusterMap() override;

protected:
    bool IsOpen() const override { return m_isOpen; }
    ResultCode KeyOf(const FileRecord* parentRecord,
                     std::uint32_t depth,
                     KeyUse use,
                     std::optional<std::uint64_t>* outKey) const override;
    std::unique_ptr<IRecordReader> MakeReader(const FileRecord& record) override;

private:
    // One folder being read: its name state, whose children its entries are, and where each entry stands.
    struct FolderWalk
    {
        LongNameGatherer longName;
        std::uint32_t folderId = 0;
        bool inDeleted = false;
        std::uint64_t entrySector = 0;
    };

    // FastFatScan.cpp
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
    bool m_isOpen = false;
    FatGeometry m_geometry;
    FatTable m_table;
    FatFolderDepth m_folderDepth;
    UsedClusterMap m_usedClusters;
    HighWordSearch m_highWords;

    std::queue<std::uint32_t> m_folderQueue;
    // Folders seen, by first cluster. RecordNumber holds the parent's first cluster until the record is stored.
    std::map<std::uint32_t, FileRecord> m_folderMap;
    std::uint64_t m_folderMapVersion = 0;    // counts its changes
    std::vector<std::uint32_t> m_chainList;  // folders above found files, in order of first use
    std::unordered_set<std::uint32_t> m_chained;
    std::uint32_t m_lastClimbFolder = 0;
    std::uint64_t m_lastClimbVersion = UINT64_MAX;
};
