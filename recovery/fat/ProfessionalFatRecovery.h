// The FAT analysis of the deep pass: finds files from directory sectors alone, on media whose boot sector, FAT or
// partition table may be gone. Live and deleted entries are treated alike.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/ScanRecordStore.h"
#include "recovery/fat/DirectorySamples.h"
#include "recovery/fat/FatVolumeList.h"
#include "recovery/fat/FirstSector.h"
#include "recovery/fat/FolderProbe.h"
#include "recovery/fat/NameCarries.h"
#include "recovery/fat/PendingFiles.h"
#include "recovery/fat/StoredSectors.h"
#include "recovery/metadata/FatEntryNames.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

// OpenRecordStore, PrepareVolume, any number of AddDirectoryStart and AddDirectorySector in ascending LBA,
// FinishAnalysis once; then only the store counts. One thread at a time, that of the deep pass.
class CProfessionalFatRecovery : public IFileRecoveryParse
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

    // Empties what an earlier pass left and opens the store of that name, or a new one for an empty name.
    [[nodiscard]] ResultCode OpenRecordStore(std::string_view logName);
    // Reads the target's first sectors; a FAT boot sector there gives the first volume.
    [[nodiscard]] ResultCode PrepareVolume();
    // A sector that begins with "." and "..".
    void AddDirectoryStart(ByteView sector, std::uint64_t lba);
    // Any other directory sector.
    void AddDirectorySector(ByteView sector, std::uint64_t lba);
    // The end of the pass: gives a place to everything that has none, and records the folders that files need.
    void FinishAnalysis();
    // Writes out what the store holds in memory, before a position is saved that counts on it.
    void FlushStore();

    // The deep pass drives this engine: 0.
    ResultCode Scan(const std::string* logName) override;
    ResultCode ListChildren(const FileRecord* parentRecord,
                            std::uint32_t depth,
                            FileRecordList& outRecords) override;
    ResultCode CountChildren(const FileRecord* parentRecord,
                             std::uint32_t depth,
                             std::uint32_t& outCount) override;
    std::uint64_t GetRecordCount() const override;
    ResultCode GetRecordPath(const FileRecord* record, std::string& outPath) override;
    // A file's clusters are taken to follow one another.
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
    // Which directory a buffer belongs to, and where. An unknown volume has no cluster size.
    struct DirectoryPlace
    {
        std::uint64_t lba = 0;
        std::uint32_t cluster = 0;
        FatVolume volume;
    };
    // A folder that an entry names. RecordNumber holds the parent's cluster until the record is stored.
    struct FolderNode
    {
        FileRecord Record;
        FatVolume Volume;
    };
    // A folder that some found file needs.
    struct FolderRef
    {
        FatVolume Volume;
        std::uint64_t Lba = 0;
    };
    // A directory buffer being parsed.
    struct Parse
    {
        DirectoryPlace place;      // as worked out from the buffer; its lba goes into the records
        std::uint32_t given = 0;   // the cluster that the buffer came with
        std::uint32_t parent = 0;  // whose children the entries are
        LongNameGatherer longName;
        std::size_t nameStart = 0;  // offset of the first piece of the name being gathered
        std::uint8_t checksum = 0;  // of the last piece
    };

    [[nodiscard]] ResultCode OpenAt(const OpenedSource& opened);
    // ProfessionalFatIntake.cpp
    void ParseAt(ByteView buffer, const DirectoryPlace& place);
    void ParseWithContinuations(ByteView buffer, DirectoryPlace place);
    void PlaceSectorByAlignment(ByteView sector, std::uint64_t lba);
    void ParseCarried(const NameCarry& carry, ByteView sector);
    void ResolveStoredSectors();
    void ResolveByVolume(ByteView sector, std::uint64_t lba);
    // ProfessionalFatTree.cpp
    NameCarry ParseDirectory(ByteView buffer, const DirectoryPlace& place);
    bool ParseEntry(ByteView entries, std::size_t offset, Parse& parse);
    void TakeFolder(ByteView entry, Parse& parse);
    void TakeFile(ByteView entry, Parse& parse);
    DirectoryPlace IdentifyDirectory(ByteView buffer, const DirectoryPlace& place);
    bool IdentifyBySubFolder(ByteView entry, DirectoryPlace& place);
    bool ReadSector(std::uint64_t lba, std::vector<std::uint8_t>& outSector);
    SectorReader FirstSectors();
    std::uint32_t HighWordOfFolder(std::uint16_t lowWord, const FatVolume& volume);
    std::uint32_t FirstClusterOfFolder(ByteView entry, const FatVolume& volume);
    std::uint32_t
    FirstClusterOfFile(ByteView entry, const std::string& name, const FatVolume& volume);
    void ClimbFrom(const Parse& parse);
    void SetFolder(std::uint32_t cluster, const FolderNode& node);
    // ProfessionalFatFinish.cpp
    void StoreFile(const FileRecord& file, const FatVolume& volume);
    void PlacePendingFiles();
    void RecordKnownFolder(const FolderNode& node);
    void RecordLostFolder(std::uint32_t cluster, const FolderRef& reference);

    bool m_isOpen = false;
    std::uint32_t m_diskNumber = 0;
    std::filesystem::path m_imagePath;  // empty for a drive
    std::uint64_t m_startLba = 0;
    std::uint64_t m_sectorCount = 0;
    char16_t m_driveLetter = 0;
    std::int32_t m_bytesPerSector = 512;
    SectorSource m_source;
    std::unique_ptr<ScanRecordStore> m_store;
    std::uint32_t m_rootCluster = 2;  // of the boot volume; 0 on FAT12 and FAT16

    FatVolumeList m_volumes;
    DirectorySampleList m_samples;
    PendingFileList m_pendingFiles;
    NameCarryList m_nameCarries;
    StoredSectorMap m_storedSectors;
    std::map<std::uint32_t, FolderNode> m_folders;  // by their own cluster; the last entry stands
    std::map<std::uint32_t, FolderRef>
        m_referencedFolders;        // by cluster; the first reference stays
    DirectoryPlace m_lastPlaced;    // by alignment during the pass
    DirectoryPlace m_lastResolved;  // while stored sectors are resolved
    FolderProbe m_probe;
    HighWordSearch m_highWords;
    // Folders from which a climb would only meet folders that are referenced already, with the cluster size and data
    // start that it comes with.
    std::set<std::pair<std::uint32_t, std::uint64_t>> m_settled;
    std::set<std::uint32_t> m_settledClusters;

    FileProgressCallback m_fileCallback = nullptr;
    void* m_callbackContext = nullptr;
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;
};
