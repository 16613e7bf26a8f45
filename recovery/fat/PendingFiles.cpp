#include "recovery/fat/PendingFiles.h"

#include <algorithm>

namespace {

// What ClusterSector adds to DataStart for a cluster; the files of one key fit the same volumes.
std::uint64_t PlaceKey(const FileRecord& record, std::uint32_t sectorsPerCluster)
{
    const std::uint32_t cluster = record.RecordNumber;
    const std::uint32_t product = FatClusterOffset(cluster, sectorsPerCluster);
    return cluster != 0 ? record.EntrySector - product : record.EntrySector + FixedRootSectors;
}

}  // namespace

void PendingFileList::Clear()
{
    m_files.clear();
    m_triedFiles = 0;
    m_triedVolumes = 0;
    for (auto& index : m_byPlace) {
        index.clear();
    }
}

void PendingFileList::Add(const FileRecord& record)
{
    m_files.push_back({false, record});
}

void PendingFileList::MatchNewFiles(const FatVolumeList& volumes, std::vector<Match>& outMatches)
{
    for (std::size_t i = m_triedFiles; i < m_files.size(); ++i) {
        const FileRecord& record = m_files[i].Record;
        if (const auto volume = volumes.FindByCluster(record.EntrySector, record.RecordNumber)) {
            outMatches.push_back({*volume, i});
        }
    }
}

void PendingFileList::MatchNewVolumes(const FatVolumeList& volumes,
                                      std::vector<Match>& outMatches) const
{
    for (std::size_t i = m_triedVolumes; i < volumes.Count(); ++i) {
        MatchVolume(volumes.At(i), i, outMatches);
    }
}

void PendingFileList::MatchVolume(const FatVolume& volume,
                                  std::size_t number,
                                  std::vector<Match>& outMatches) const
{
    const auto* size = std::find(std::begin(LegalClusterSizes), std::end(LegalClusterSizes),
                                 volume.SectorsPerCluster);
    if (size == std::end(LegalClusterSizes)) {
        return;
    }
    const auto& places = m_byPlace[size - std::begin(LegalClusterSizes)];
    // Sums are taken in 32 bits, so the key of a file can lie 2^32 below.
    for (const std::uint64_t carry : {std::uint64_t{0}, std::uint64_t{1} << 32}) {
        const auto found = places.find(volume.Base + volume.DataStart - carry);
        if (found == places.end()) {
            continue;
        }
        for (const std::size_t file : found->second) {
            const FileRecord& record = m_files[file].Record;
            if (!m_files[file].Done &&
                ClusterSector(volume, record.RecordNumber) == record.EntrySector) {
                outMatches.push_back({number, file});
            }
        }
    }
}

void PendingFileList::PlaceExact(const FatVolumeList& volumes, const PlaceFunction& place)
{
    if (m_files.empty() || volumes.Empty()) {
        return;
    }
    std::vector<Match> matches;
    MatchNewVolumes(volumes, matches);
    MatchNewFiles(volumes, matches);
    std::sort(matches.begin(), matches.end());
    for (const Match& match : matches) {
        PendingFile& file = m_files[match.file];
        if (!file.Done) {
            place(file.Record, volumes.At(match.volume));
            file.Done = true;
        }
    }
    for (; m_triedFiles < m_files.size(); ++m_triedFiles) {
        if (m_files[m_triedFiles].Done) {
            continue;
        }
        for (std::size_t size = 0; size < std::size(LegalClusterSizes); ++size) {
            m_byPlace[size][PlaceKey(m_files[m_triedFiles].Record, LegalClusterSizes[size])]
                .push_back(m_triedFiles);
        }
    }
    m_triedVolumes = volumes.Count();
}

void PendingFileList::PlaceRest(
    const std::function<const FatVolume*(std::uint64_t lba)>& findVolume,
    const PlaceFunction& place)
{
    for (PendingFile& file : m_files) {
        const FatVolume* volume = file.Done ? nullptr : findVolume(file.Record.EntrySector);
        if (volume != nullptr) {
            place(file.Record, *volume);
            file.Done = true;
        }
    }
}
