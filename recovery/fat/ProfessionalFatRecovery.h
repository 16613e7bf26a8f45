// The FAT analysis of the deep pass: finds files from directory sectors alone, on media whose boot sector, FAT or
// partition table may be gone. Live and deleted entries are treated alike.
#pragma once

#include "recovery/StoreEngine.h"
#include "recovery/WorkReport.h"
#include "recovery/fat/DirectorySamples.h"
#include "recovery/fat/FatVolumeList.h"
#include "recovery/fat/FirstSector.h"
#include "recovery/fat/FolderProbe.h"
#include "recovery/fat/NameCarries.h"
#include "recovery/fat/PendingFiles.h"
#include "recovery/fat/StoredSectors.h"
#include "recovery/metadata/FatEntryNames.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

// OpenRecordStore, PrepareVolume, any number of AddDirectoryStart and AddDirectorySector in ascending LBA,
// FinishAnalysis once; then only the store counts. One thread at a time, that of the deep pass.
class CProfessionalFatRecovery : public CStoreEngine
{
public:
    using CStoreEngine::CStoreEngine;

    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;

    // Empties what an earlier pass left and opens the store of that name, or a new one for an empty name.
    [[nodiscard]] ResultCode OpenRecordStore(std::string_view logName);
    // The same with nothing in it: what it had is shown again.
    [[nodiscard]] ResultCode OpenEmptiedStore(std::string_view logName);
    // Reads the target's first sectors; a FAT boot sector there gives the first volume.
    [[nodiscard]] ResultCode PrepareVolume();
    // A sector that begins with "." and "..".
    void AddDirectoryStart(ByteView sector, std::uint64_t lba);
    // Any other directory sector.
    void AddDirectorySector(ByteView sector, std::uint64_t lba);
    // The end of the pass: gives a place to everything that has none, and records the folders that files need. Asked
    // between any two of them, report ends it when it answers other than 0, which is returned.
    ResultCode FinishAnalysis(const WorkReport& report);

protected:
    bool IsOpen() const override { return m_isOpen; }
    ResultCode KeyOf(const FileRecord* parentRecord,
                     std::uint32_t depth,
                     KeyUse use,
                     std::optional<std::uint64_t>* outKey) const override;
    // A file's clusters are taken to follow one another.
    std::unique_ptr<IRecordReader> MakeReader(const FileRecord& record) override;

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
    // A step of the way up: a folder's cluster, with the cluster size and data start that it is looked for by.
    using FolderPlace = std::pair<std::uint32_t, std::uint64_t>;
    static constexpr FolderPlace NoFolder = {0, UINT64_MAX};
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

    void ForgetPass();
    // ProfessionalFatIntake.cpp
    void ParseAt(ByteView buffer, const DirectoryPlace& place);
    void ParseWithContinuations(ByteView buffer, DirectoryPlace place);
    void PlaceSectorByAlignment(ByteView sector, std::uint64_t lba);
    void ParseCarried(const NameCarry& carry, ByteView sector);
    ResultCode ResolveStoredSectors(const WorkReport& report);
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
    ResultCode RecordFolders(const WorkReport& report);
    ResultCode PlaceLastFiles(const WorkReport& report);
    void RecordKnownFolder(const FolderNode& node);
    void RecordLostFolder(std::uint32_t cluster, const FolderRef& reference);

    bool m_isOpen = false;
    std::uint64_t m_startLba = 0;
    std::uint64_t m_sectorCount = 0;
    std::int32_t m_bytesPerSector = 512;
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
    // Folders from which a climb would only meet folders that are referenced already, each with the one that it meets next.
    std::map<FolderPlace, FolderPlace> m_settled;
};
