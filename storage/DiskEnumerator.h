// The list of what can be scanned: the partitions of every disk, the gaps between them, and disks without any.
#pragma once

#include "platform/StorageMap.h"
#include "storage/VolumeRecord.h"

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <tuple>
#include <vector>

// Asked while disks are read, inside a long table too; false stops the reading.
using ListProgress = std::function<bool(std::size_t disksDone, std::size_t disks)>;

// Keep one for the whole run: an entry that is found again keeps its number, and no number is given twice. One thread uses it;
// another may open drives by their numbers meanwhile.
class DiskEnumerator
{
public:
    // Clears Disks and fills them. 1, or 0 when the system does not list its disks or progress stopped it; Disks are empty
    // then.
    int Enumerate(const ListProgress& progress = {});
    // The entries disk by disk, in the order of Disks. 0 at the end, with outRecord untouched.
    int Next(VolumeRecord& outRecord);
    // Enumerates anew and gives what of the earlier entries is missing now. The result of the enumeration, or 1 when
    // something is missing.
    int FindMissing(const std::vector<VolumeRecord>& previous, std::vector<VolumeRecord>& outList);
    // Replaces outList by all entries, disk by disk.
    void Snapshot(std::vector<VolumeRecord>& outList) const;

    // Bytes per sector of the disk that was read last.
    std::int32_t SectorSize = 512;
    // Disk number to its entries, by their start.
    std::map<std::uint32_t, std::vector<VolumeRecord>> Disks;

private:
    struct DiskSize
    {
        std::uint64_t bytes = 0;
        std::uint32_t sectorSize = 512;
    };

    void FillGaps(std::uint32_t diskNumber, std::vector<VolumeRecord>& entries);
    void AddWholeDisks();
    void NumberEntries();
    char16_t NewNumber();

    // Disk number, start sector, and which of the entries there: damaged tables have several.
    using Place = std::tuple<std::uint32_t, std::uint64_t, std::size_t>;
    std::map<std::uint32_t, DiskSize> m_sizes;
    std::map<Place, char16_t> m_givenNumbers;
    std::set<char16_t> m_usedNumbers;
    bool m_numberedBefore = false;
    std::uint32_t m_cursorDisk = 0;
    std::size_t m_cursorEntry = 0;
};
