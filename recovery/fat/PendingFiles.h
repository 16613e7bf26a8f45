// Files found in a directory whose volume is not known yet.
#pragma once

#include "recovery/FileRecord.h"
#include "recovery/fat/FatVolumeList.h"

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

struct PendingFile
{
    bool Done = false;  // has got a volume
    FileRecord Record;  // RecordNumber holds the parent folder's cluster until the record is stored
};

class PendingFileList
{
public:
    using PlaceFunction = std::function<void(FileRecord& record, const FatVolume& volume)>;

    void Clear();
    void Add(const FileRecord& record);
    // Calls place for each file in whose folder's first sector its entry stands, by volume and then by arrival. A pair
    // of file and volume that did not fit once is not tried again.
    void PlaceExact(const FatVolumeList& volumes, const PlaceFunction& place);
    // Calls place for each of the rest, with the volume that findVolume gives for its entry's sector, if any.
    void PlaceRest(const std::function<const FatVolume*(std::uint64_t lba)>& findVolume,
                   const PlaceFunction& place);

private:
    struct Match
    {
        std::size_t volume;
        std::size_t file;
        // By volume, then by arrival.
        friend bool operator<(const Match& left, const Match& right)
        {
            return left.volume != right.volume ? left.volume < right.volume
                                               : left.file < right.file;
        }
    };

    void MatchNewFiles(const FatVolumeList& volumes, std::vector<Match>& outMatches);
    void MatchNewVolumes(const FatVolumeList& volumes, std::vector<Match>& outMatches) const;
    void
    MatchVolume(const FatVolume& volume, std::size_t number, std::vector<Match>& outMatches) const;

    std::vector<PendingFile> m_files;
    std::size_t m_triedFiles = 0;  // against all of the tried volumes
    std::size_t m_triedVolumes = 0;
    // Tried files by the LBA of their entry and their folder's cluster.
    std::unordered_map<std::uint64_t, std::vector<std::size_t>>
        m_byPlace[std::size(LegalClusterSizes)];
};
