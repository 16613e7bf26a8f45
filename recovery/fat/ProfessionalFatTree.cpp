// Turns a directory buffer into records and folders for CProfessionalFatRecovery.
#include "recovery/fat/ProfessionalFatRecovery.h"
#include "recovery/metadata/FatDateTime.h"
#include "recovery/metadata/SectorValidators.h"

#include <unordered_map>

namespace {

// Without tenths and with the odd minute: the quick engine's record of the same file can show other times.
void SetTimes(ByteView entry, FileRecord& record)
{
    record.CreationTime = FileTimeFromFat(entry.U16(16), entry.U16(14));
    record.AccessTime = FileTimeFromFat(entry.U16(18), 0);
    record.WriteTime = FileTimeFromFat(entry.U16(24), entry.U16(22));
}

bool LacksHighWord(ByteView entry)
{
    return entry.U8(0) == DeletedMark && entry.U16(EntryHighWord) == 0;
}

std::uint64_t VolumeTag(const FatVolume& volume)
{
    return std::uint64_t{volume.SectorsPerCluster} << 32 | volume.DataStart;
}

}  // namespace

SectorReader CProfessionalFatRecovery::FirstSectors()
{
    return {m_source, m_bytesPerSector, m_startLba + m_sectorCount};
}

std::uint32_t CProfessionalFatRecovery::HighWordOfFolder(std::uint16_t lowWord,
                                                         const FatVolume& volume)
{
    return m_highWords.OfFolder(
        FirstSectors(), VolumeTag(volume), lowWord,
        [&volume](std::uint32_t cluster) { return ClusterSector(volume, cluster); });
}

std::uint32_t CProfessionalFatRecovery::FirstClusterOfFolder(ByteView entry,
                                                             const FatVolume& volume)
{
    const std::uint16_t lowWord = entry.U16(EntryLowWord);
    if (LacksHighWord(entry) && volume.IsKnown()) {
        return HighWordOfFolder(lowWord, volume) << 16 | lowWord;
    }
    return FirstClusterOf(entry);
}

std::uint32_t CProfessionalFatRecovery::FirstClusterOfFile(ByteView entry,
                                                           const std::string& name,
                                                           const FatVolume& volume)
{
    const std::uint16_t lowWord = entry.U16(EntryLowWord);
    if (LacksHighWord(entry) && volume.IsKnown()) {
        const auto sectorOf = [&volume](std::uint32_t cluster) {
            return ClusterSector(volume, cluster);
        };
        return m_highWords.OfFile(FirstSectors(), VolumeTag(volume), lowWord, name, sectorOf)
                   << 16 |
               lowWord;
    }
    return FirstClusterOf(entry);
}

bool CProfessionalFatRecovery::ReadSector(std::uint64_t lba, std::vector<std::uint8_t>& outSector)
{
    std::int32_t sectorsRead = 0;
    outSector.resize(static_cast<std::size_t>(m_bytesPerSector));
    return m_source.ReadSectors(outSector.data(), 1, lba, m_bytesPerSector, &sectorsRead) ==
           ResultSuccess;
}

// Which directory a buffer belongs to; the place given may be a guess. A read that fails leaves it as it is.
CProfessionalFatRecovery::DirectoryPlace
CProfessionalFatRecovery::IdentifyDirectory(ByteView buffer, const DirectoryPlace& given)
{
    DirectoryPlace place = given;
    const FatVolume& volume = given.volume;
    if (buffer.U8(EntryAttributes) == AttributeVolumeLabel) {
        place.cluster = m_rootCluster;
        if (volume.IsKnown()) {
            place.lba = volume.Base + volume.DataStart;
        }
        return place;
    }
    if (buffer.U8(0) == '.' && buffer.Matches(DirEntryBytes, "..")) {
        place.cluster = FirstClusterOf(buffer);
        return place;
    }
    std::vector<std::uint8_t> sector;
    if (!volume.IsKnown() || !ReadSector(PlainClusterSector(volume, given.cluster), sector) ||
        StartsWithDotEntries(ByteView(sector))) {
        return place;
    }
    LongNameGatherer longName;
    for (std::size_t offset = 0; offset < buffer.Size(); offset += DirEntryBytes) {
        const ByteView entries = buffer.Sub(offset);
        const std::uint8_t attributes = entries.U8(EntryAttributes);
        if (entries.U8(0) == 0) {
            break;
        }
        const bool isFile = (attributes & (AttributeFolder | AttributeArchive)) == AttributeArchive;
        if (!IsValidDirEntry(entries) || isFile) {
            longName.Reset();  // a file takes its pieces with it
        } else if (attributes == AttributeLongName) {
            if (!longName.AddPiece(entries)) {
                break;
            }
        } else if ((attributes & AttributeFolder) != 0) {
            const std::string name =
                longName.HasPieces() ? longName.Take() : ShortFolderName(entries);
            if (!name.empty() && IdentifyBySubFolder(entries, place)) {
                break;
            }
        }
    }
    return place;
}

// True ends the search: the sub-folder is intact, and the buffer counts as that folder's from now on, so its entries are
// recorded inside of it; or its sector cannot be read.
bool CProfessionalFatRecovery::IdentifyBySubFolder(ByteView entry, DirectoryPlace& place)
{
    const std::uint16_t lowWord = entry.U16(EntryLowWord);
    std::uint32_t cluster = 0;
    if (entry.U8(0) == DeletedMark) {
        cluster = FirstClusterOfFolder(entry, place.volume);
    } else {
        // The low word stands for both halves, so a live folder almost never gives a hit. Records depend on it: it decides which
        // parent the entries get.
        cluster = std::uint32_t{lowWord} << 16 | lowWord;
    }
    const std::uint64_t lba = ClusterSector(place.volume, cluster);
    std::vector<std::uint8_t> sector;
    if (lba > m_startLba + m_sectorCount || !ReadSector(lba, sector)) {
        return true;
    }
    if (!StartsWithDotEntries(ByteView(sector))) {
        return false;
    }
    place.cluster = FirstClusterOf(ByteView(sector));
    place.lba = lba;
    return true;
}

// The carry is that of a name which the buffer's end broke off; checksum 0 when there is none.
NameCarry CProfessionalFatRecovery::ParseDirectory(ByteView buffer, const DirectoryPlace& place)
{
    Parse parse;
    parse.place = IdentifyDirectory(buffer, place);
    parse.given = place.cluster;
    parse.parent = parse.place.cluster;
    for (std::size_t offset = 0; offset < buffer.Size(); offset += DirEntryBytes) {
        const ByteView entries = buffer.Sub(offset);
        if (entries.U8(0) == 0 || !ParseEntry(entries, offset, parse)) {
            return {};
        }
    }
    NameCarry carry;
    if (parse.longName.HasPieces()) {
        const ByteView rest = buffer.Sub(parse.nameStart);
        carry.Checksum = parse.checksum;
        carry.SectorsPerCluster = place.volume.SectorsPerCluster;
        carry.BaseLow = static_cast<std::uint32_t>(place.volume.Base);
        carry.DataStart = place.volume.DataStart;
        carry.Cluster = parse.parent;
        carry.Lba = parse.place.lba;
        carry.Bytes.assign(rest.Span().begin(), rest.Span().end());
    }
    return carry;
}

// False ends the buffer: the twentieth piece of a name.
bool CProfessionalFatRecovery::ParseEntry(ByteView entries, std::size_t offset, Parse& parse)
{
    if (!IsValidDirEntry(entries)) {
        parse.longName.Reset();
        return true;
    }
    const ByteView entry = entries.Sub(0, DirEntryBytes);
    const std::uint8_t attributes = entry.U8(EntryAttributes);
    if (attributes == AttributeLongName) {
        if (!parse.longName.HasPieces()) {
            parse.nameStart = offset;
        }
        parse.checksum = entry.U8(13);
        return parse.longName.AddPiece(entry);
    }
    if ((attributes & AttributeFolder) != 0) {
        TakeFolder(entry, parse);
    } else if ((attributes & AttributeArchive) != 0) {
        TakeFile(entry, parse);
    }
    return true;
}

void CProfessionalFatRecovery::TakeFolder(ByteView entry, Parse& parse)
{
    const std::string name =
        parse.longName.HasPieces() ? parse.longName.Take() : ShortFolderName(entry);
    if (name == ".") {
        parse.parent = FirstClusterOf(entry);
        return;
    }
    if (name.empty() || name == "..") {
        return;
    }
    FolderNode node;
    node.Volume = parse.place.volume;
    node.Record.SetName(name);
    SetTimes(entry, node.Record);
    node.Record.EngineKind = EngineKindProfessionalFat;
    node.Record.DriveLetter = m_driveLetter;
    node.Record.IsFolder = 1;
    node.Record.NodeId = FirstClusterOfFolder(entry, parse.place.volume);
    node.Record.EntrySector = parse.place.lba;
    node.Record.RecordNumber = parse.parent;
    if (node.Record.NodeId != 0 && node.Record.NodeId != parse.parent) {
        SetFolder(node.Record.NodeId, node);
    }
}

void CProfessionalFatRecovery::SetFolder(std::uint32_t cluster, const FolderNode& node)
{
    m_folders.insert_or_assign(cluster, node);
    // Where the way up from here leads somewhere else now, that from every folder below does too.
    // By value: a reference to a field of a packed record may be misaligned.
    const FolderPlace next = {std::uint32_t{node.Record.RecordNumber}, VolumeTag(node.Volume)};
    for (auto at = m_settled.lower_bound({cluster, 0});
         at != m_settled.end() && at->first.first == cluster; ++at) {
        if (at->second != next) {
            m_settled.clear();
            return;
        }
    }
}

void CProfessionalFatRecovery::TakeFile(ByteView entry, Parse& parse)
{
    const std::string name =
        parse.longName.HasPieces() ? parse.longName.Take() : ShortFileName(entry);
    if (name.empty()) {
        return;
    }
    FileRecord file;
    file.SetName(name);
    SetTimes(entry, file);
    file.EngineKind = EngineKindProfessionalFat;
    file.DriveLetter = m_driveLetter;
    file.NodeId = FirstClusterOfFile(entry, name, parse.place.volume);
    file.FileSize = entry.U32(EntrySize);
    file.EntrySector = parse.place.lba;
    file.RecordNumber = parse.parent;
    if (parse.place.volume.IsKnown()) {
        StoreFile(file, parse.place.volume);
    } else {
        m_pendingFiles.Add(file);
    }
    ClimbFrom(parse);
}

// Notes the folders that a found file needs, from its own up to the root.
void CProfessionalFatRecovery::ClimbFrom(const Parse& parse)
{
    FatVolume volume = parse.place.volume;
    FolderPlace here = {parse.parent, VolumeTag(volume)};
    std::uint64_t lba = parse.place.lba;
    std::unordered_map<std::uint32_t, std::uint64_t> visited;
    std::vector<std::pair<FolderPlace, FolderPlace>> passed;
    bool isRing = true;
    while (here.first > m_rootCluster && !m_settled.contains(here)) {
        const auto [before, isNew] = visited.try_emplace(here.first, here.second);
        if (!isNew) {
            isRing = before->second == here.second;
            break;
        }
        m_referencedFolders.try_emplace(here.first, FolderRef{volume, lba});
        const auto folder = m_folders.find(here.first);
        FolderPlace next = {m_rootCluster, here.second};
        if (folder != m_folders.end()) {
            volume = folder->second.Volume;
            next = {std::uint32_t{folder->second.Record.RecordNumber}, VolumeTag(volume)};
            lba = folder->second.Record.EntrySector;
        } else if (m_probe.FindParentCluster(volume, here.first, &next.first) == ResultSuccess) {
            lba = ClusterSector(volume, parse.given);
        } else {
            next = NoFolder;
        }
        passed.emplace_back(here, next);
        if (next == NoFolder || next.first == here.first) {
            break;
        }
        here = next;
    }
    // A way that met a folder of another volume under the same number ended there by chance: the next one may go on.
    if (isRing) {
        m_settled.insert(passed.begin(), passed.end());
    }
}
