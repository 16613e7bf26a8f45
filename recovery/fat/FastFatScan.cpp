// The scan of CFastFatRecovery: the walk through the folders, one record for each file found, then the folders above
// them.
#include "platform/FileTime.h"
#include "recovery/fat/FastFatRecovery.h"
#include "recovery/metadata/FatDateTime.h"
#include "recovery/metadata/SectorValidators.h"

namespace {

constexpr std::uint64_t ReportInterval = 5000;  // milliseconds
constexpr std::int32_t FullRange = 100;         // a scan of its own
constexpr std::int32_t DeepRange = 9;           // the first stage of a deep scan
constexpr std::uint32_t RootUnitBytes = 16384;  // of FAT12 and FAT16
constexpr std::uint16_t LowestMinuteBit = 0x20;

void SetTimes(ByteView entry, FileRecord& record)
{
    record.CreationTime = FileTimeFromFatCreation(entry.U16(16), entry.U16(14), entry.U8(13));
    record.AccessTime = FileTimeFromFat(entry.U16(18), 0);
    // The minutes of the write time lose their lowest bit, so every record shows an even minute there.
    record.WriteTime = FileTimeFromFat(
        entry.U16(24), static_cast<std::uint16_t>(entry.U16(22) & ~LowestMinuteBit));
}

// A count up and a count down by one for every five seconds: neither measures anything.
struct Ticker
{
    std::uint64_t lastReport = TickMilliseconds();
    std::int32_t step = 1;
    std::int32_t left = 100;
    std::int32_t deepStep = 20;
};

}  // namespace

ResultCode CFastFatRecovery::Scan(const std::string* logName)
{
    m_folderMap.clear();
    m_folderQueue = {};
    m_chainList.clear();
    m_chained.clear();
    ++m_folderMapVersion;
    if (logName != nullptr) {
        (void)MakeStore(*logName);  // a store that is gone has nothing to show
        return ResultSuccess;
    }
    UseLogFolder();
    (void)MakeStore(
        ScanRecordStore::MakeName("Fast_", m_startLba));  // the search tells that nothing was kept
    const ResultCode result = WalkAndRecord();
    FlushStore();
    return result;
}

ResultCode CFastFatRecovery::WalkAndRecord()
{
    ResultCode result = Report(1, -1);
    if (result == ResultSuccess) {
        result = WalkFolders();
    }
    if (result != ResultSuccess) {
        return result;
    }
    result = Report(80, 10);
    if (result != ResultSuccess) {
        return result;
    }
    RecordFolders();
    return Report(100, 0);
}

ResultCode CFastFatRecovery::WalkFolders()
{
    Ticker ticker;
    std::unordered_set<std::uint32_t> walked;
    m_folderQueue.push(m_geometry.rootCluster);
    ResultCode result = ResultSuccess;
    while (result == ResultSuccess && !m_folderQueue.empty()) {
        const std::uint32_t cluster = m_folderQueue.front();
        m_folderQueue.pop();
        if (!walked.insert(cluster).second) {
            continue;
        }
        WalkDirectory(cluster);
        const std::uint64_t now = TickMilliseconds();
        if (now - ticker.lastReport < ReportInterval) {
            continue;
        }
        if (m_progressRange == FullRange) {
            result = Report(++ticker.step, --ticker.left);
            ticker.lastReport = now;
        } else if (m_progressRange == DeepRange) {
            result = Report(++ticker.deepStep, -1);
            ticker.lastReport = now;
        }
    }
    return result;
}

// Only folders that lead to a found file get a record.
void CFastFatRecovery::RecordFolders()
{
    for (const std::uint32_t cluster : m_chainList) {
        const auto folder = m_folderMap.find(cluster);
        if (folder == m_folderMap.end()) {
            continue;
        }
        const std::uint32_t parent = folder->second.RecordNumber;
        FileRecord& record = m_store->ReserveRecord();
        record = folder->second;
        record.RecordNumber = m_store->GetRecordCount();
        m_store->LinkFolder(parent, m_folderDepth.DepthOf(parent), record.RecordNumber,
                            record.NodeId, record.NameText());
    }
}

void CFastFatRecovery::WalkDirectory(std::uint32_t cluster)
{
    const bool isFixedRoot = cluster == 0 && !m_geometry.isFat32;
    const std::uint32_t unitBytes = isFixedRoot ? RootUnitBytes : m_geometry.ClusterBytes();
    const auto unitSectors = static_cast<std::int32_t>(unitBytes) / m_geometry.sectorSize;
    std::vector<std::uint8_t> unit(unitBytes);
    FolderWalk walk;
    walk.folderId = cluster;
    walk.entrySector = m_startLba + m_geometry.SectorOfFolder(cluster);
    const auto known = m_folderMap.find(cluster);
    const bool isChecked = known != m_folderMap.end();
    walk.inDeleted = isChecked && known->second.InDeletedFolder != 0;
    // A chain in a ring must not be walked for ever.
    std::unordered_set<std::uint32_t> read;
    for (std::uint32_t current = cluster; read.insert(current).second;) {
        std::int32_t sectorsRead = 0;
        const std::uint64_t lba = m_startLba + m_geometry.SectorOfFolder(current);
        if (m_source.ReadSectors(unit.data(), unitSectors, lba, m_geometry.sectorSize,
                                 &sectorsRead) != ResultSuccess) {
            return;
        }
        // On every cluster, so that a sub-folder is walked no further than its first one and a cluster that was
        // given to a file is not read as a folder.
        if (isChecked && current != m_geometry.rootCluster &&
            !StartsWithDotEntries(ByteView(unit))) {
            return;
        }
        if (!WalkUnit(ByteView(unit), walk)) {
            return;
        }
        const std::uint32_t next = m_table.NextCluster(current);
        if (next == 0 || next == current) {
            return;
        }
        current = next;
    }
}

// False ends the whole folder.
bool CFastFatRecovery::WalkUnit(ByteView unit, FolderWalk& walk)
{
    const auto sectorBytes = static_cast<std::size_t>(m_geometry.sectorSize);
    for (std::size_t offset = 0; offset < unit.Size(); offset += DirEntryBytes) {
        // Not at index 0, so the sector lags by one for each unit after the first, and records hold it so.
        if (offset != 0 && offset % sectorBytes == 0) {
            ++walk.entrySector;
        }
        const ByteView entries = unit.Sub(offset);
        if (entries.U8(0) == 0 || !TakeEntry(entries, walk)) {
            return false;
        }
    }
    return true;
}

bool CFastFatRecovery::TakeEntry(ByteView entries, FolderWalk& walk)
{
    if (!IsValidDirEntry(entries)) {
        walk.longName.Reset();
        return true;
    }
    const ByteView entry = entries.Sub(0, DirEntryBytes);
    const std::uint8_t attributes = entry.U8(EntryAttributes);
    if (attributes == AttributeLongName) {
        return walk.longName.AddPiece(entry);
    }
    if ((attributes & AttributeFolder) != 0) {
        TakeFolder(entry, walk);
    } else if ((attributes & AttributeArchive) != 0) {
        TakeFile(entry, walk);
    } else {
        walk.longName
            .Release();  // a volume label; pieces before it join the next name, as records show it
    }
    return true;
}

void CFastFatRecovery::TakeFolder(ByteView entry, FolderWalk& walk)
{
    const std::string name =
        walk.longName.HasPieces() ? walk.longName.Take() : ShortFolderName(entry);
    if (name == ".") {
        walk.folderId = FirstClusterOf(entry);
        return;
    }
    if (name == "..") {
        return;
    }
    FileRecord record;
    record.SetName(name);
    SetTimes(entry, record);
    record.NodeId = FirstClusterOfEntry(entry, nullptr);
    record.EngineKind = EngineKindFastFat;
    record.ClusterBytes = m_geometry.ClusterBytes();
    record.DriveLetter = m_driveLetter;
    record.IsFolder = 1;
    record.RecordNumber = walk.folderId;
    record.DataStart = m_geometry.dataStart;
    record.InDeletedFolder = entry.U8(0) == DeletedMark || walk.inDeleted ? 1 : 0;
    if (record.NodeId != 0 && record.NodeId != walk.folderId) {
        m_folderQueue.push(std::uint32_t{record.NodeId});
        m_folderMap[std::uint32_t{record.NodeId}] = record;  // the last entry seen stands
        ++m_folderMapVersion;
    }
}

void CFastFatRecovery::TakeFile(ByteView entry, FolderWalk& walk)
{
    const std::string name =
        walk.longName.HasPieces() ? walk.longName.Take() : ShortFileName(entry);
    if (entry.U8(0) == DeletedMark || walk.inDeleted) {
        RecordFile(entry, name, walk);
    }
}

void CFastFatRecovery::RecordFile(ByteView entry, const std::string& name, const FolderWalk& walk)
{
    FileRecord& record = m_store->ReserveRecord();
    record.RecordNumber = m_store->GetRecordCount();
    record.SetName(name);
    SetTimes(entry, record);
    record.NodeId = FirstClusterOfEntry(entry, &name);
    record.FileSize = entry.U32(EntrySize);
    record.EntrySector = walk.entrySector;
    record.PartitionStart = m_startLba;
    record.EngineKind = EngineKindFastFat;
    record.ClusterBytes = m_geometry.ClusterBytes();
    record.DriveLetter = m_driveLetter;
    record.DataStart = m_geometry.dataStart;
    m_store->LinkRecord(walk.folderId, m_folderDepth.DepthOf(walk.folderId), record.RecordNumber);
    record.HeadIntact = CheckHead(record) ? 1 : 0;
    ClimbFrom(walk.folderId);
}

SectorReader CFastFatRecovery::FirstSectors()
{
    return {m_source, m_geometry.sectorSize, m_startLba + m_sectorCount};
}

// fileName is null for a folder.
std::uint32_t CFastFatRecovery::FirstClusterOfEntry(ByteView entry, const std::string* fileName)
{
    const std::uint16_t lowWord = entry.U16(EntryLowWord);
    if (!m_geometry.isFat32) {
        return lowWord;
    }
    // Deletion often wipes the high word.
    if (entry.U8(0) == DeletedMark && entry.U16(EntryHighWord) == 0) {
        const auto sectorOf = [this](std::uint32_t cluster) {
            return m_startLba + m_geometry.SectorOfCluster(cluster);
        };
        const std::uint32_t high =
            fileName != nullptr
                ? m_highWords.OfFile(FirstSectors(), 0, lowWord, *fileName, sectorOf)
                : m_highWords.OfFolder(FirstSectors(), 0, lowWord, sectorOf);
        return high << 16 | lowWord;
    }
    return FirstClusterOf(entry);
}

bool CFastFatRecovery::CheckHead(const FileRecord& record)
{
    return HeadFitsName(FirstSectors(), record.NameText(),
                        m_startLba + m_geometry.SectorOfCluster(record.NodeId));
}

// Notes the folders above a found file. A folder that is noted already does not end the climb: its parent may have
// been replaced since.
void CFastFatRecovery::ClimbFrom(std::uint32_t folder)
{
    // From the same folder over the same map there is nothing new to find.
    if (m_lastClimbVersion == m_folderMapVersion && m_lastClimbFolder == folder) {
        return;
    }
    m_lastClimbVersion = m_folderMapVersion;
    m_lastClimbFolder = folder;
    std::unordered_set<std::uint32_t> passed;
    do {
        if (!passed.insert(folder).second) {
            return;  // folders that contain each other
        }
        if (m_chained.insert(folder).second) {
            m_chainList.push_back(folder);
        }
        const auto known = m_folderMap.find(folder);
        if (known == m_folderMap.end() || known->second.RecordNumber == folder) {
            return;
        }
        folder = known->second.RecordNumber;
    } while (folder > m_geometry.rootCluster);
}
