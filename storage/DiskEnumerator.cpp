#include "storage/DiskEnumerator.h"

#include "storage/DiskGeometry.h"
#include "storage/DriveRegistry.h"
#include "storage/VolumeReading.h"

#include <algorithm>

namespace {

void SortByStart(std::vector<VolumeRecord>& entries)
{
    std::stable_sort(entries.begin(), entries.end(),
                     [](const VolumeRecord& left, const VolumeRecord& right) {
                         return left.StartSector < right.StartSector;
                     });
}

VolumeRecord MakeGap(std::uint32_t diskNumber,
                     std::uint64_t startSector,
                     std::uint64_t sectorCount,
                     std::uint32_t sectorSize)
{
    VolumeRecord gap;
    gap.DiskNumber = diskNumber;
    gap.StartSector = startSector;
    gap.SectorCount = sectorCount;
    gap.TotalBytes = sectorCount * sectorSize;
    gap.FreeBytes = gap.TotalBytes;
    return gap;
}

// A number that would read as a letter, or as the mark of an entry without a number.
bool ReadsAsLetter(char16_t number)
{
    return number == VolumeRecord::NoLetter || number == u'/' ||
           (number >= u'A' && number <= u'Z') || (number >= u'a' && number <= u'z');
}

}  // namespace

int DiskEnumerator::Enumerate(const ListProgress& progress)
{
    Disks.clear();
    m_sizes.clear();
    m_cursorDisk = 0;
    m_cursorEntry = 0;
    const StorageMap storage;
    if (!storage.Listed()) {
        return 0;
    }
    const std::vector<BlockDevice> disks = DisksToShow(storage.Devices());
    std::size_t disksDone = 0;
    bool stopped = false;
    const auto goesOn = [&] {
        stopped = stopped || (progress && !progress(disksDone, disks.size()));
        return !stopped;
    };
    for (const BlockDevice& disk : disks) {
        if (!goesOn()) {
            break;
        }
        ++disksDone;
        const std::uint32_t number = DriveRegistry::Instance().NumberOf(disk);
        if (number == DriveRegistry::NoNumber) {
            continue;
        }
        DiskSize size;
        std::vector<VolumeRecord> volumes =
            ReadVolumes(disk, number, storage, &size.bytes, &size.sectorSize, goesOn);
        if (size.bytes < size.sectorSize) {
            continue;  // not one sector to read
        }
        m_sizes[number] = size;
        if (!volumes.empty()) {
            Disks[number] = std::move(volumes);
        }
    }
    if (stopped) {
        Disks.clear();  // a part of a list would number what stands in it wrongly
        return 0;
    }
    for (auto& [number, entries] : Disks) {
        SortByStart(entries);
        FillGaps(number, entries);
        SortByStart(entries);
    }
    AddWholeDisks();
    NumberEntries();
    return 1;
}

// Converts the entries from bytes to sectors, and adds what lies between them. Signed, since an entry may begin ahead
// of the first track's end.
void DiskEnumerator::FillGaps(std::uint32_t diskNumber, std::vector<VolumeRecord>& entries)
{
    const DiskSize& disk = m_sizes[diskNumber];
    SectorSize = static_cast<std::int32_t>(disk.sectorSize);
    constexpr auto Cylinder = static_cast<std::int64_t>(GeometryCylinderSectors);
    const auto total = static_cast<std::int64_t>(GeometrySectors(disk.bytes / disk.sectorSize));
    auto cursor = static_cast<std::int64_t>(GeometrySectorsPerTrack);
    std::vector<VolumeRecord> gaps;
    const auto addGap = [&](std::int64_t end) {
        if (end - cursor > Cylinder) {
            gaps.push_back(MakeGap(diskNumber, static_cast<std::uint64_t>(cursor),
                                   static_cast<std::uint64_t>(end - cursor), disk.sectorSize));
        }
    };
    for (VolumeRecord& entry : entries) {
        entry.StartSector /= disk.sectorSize;
        entry.SectorCount /= disk.sectorSize;
        addGap(static_cast<std::int64_t>(entry.StartSector));
        cursor = static_cast<std::int64_t>(entry.StartSector + entry.SectorCount);
    }
    addGap(total);
    entries.insert(entries.end(), gaps.begin(), gaps.end());
}

void DiskEnumerator::AddWholeDisks()
{
    for (const auto& [number, disk] : m_sizes) {
        if (!Disks.contains(number)) {
            SectorSize = static_cast<std::int32_t>(disk.sectorSize);
            Disks[number].push_back(
                MakeGap(number, 0, GeometrySectors(disk.bytes / disk.sectorSize), disk.sectorSize));
        }
    }
}

// The first list is numbered 1, 2, 3 ... Later ones keep what is known by its place, and what is new gets a number that
// nothing had in this run: records find the target that they were found on by it.
void DiskEnumerator::NumberEntries()
{
    char16_t counter = 0;
    std::set<Place> placesNow;
    for (auto& [disk, entries] : Disks) {
        for (VolumeRecord& entry : entries) {
            Place place{disk, entry.StartSector, 0};
            while (placesNow.contains(place)) {
                ++std::get<2>(place);
            }
            placesNow.insert(place);
            ++counter;
            const auto known = m_givenNumbers.find(place);
            entry.Letter = known != m_givenNumbers.end() ? known->second
                           : m_numberedBefore            ? NewNumber()
                                                         : counter;
            m_givenNumbers[place] = entry.Letter;
            m_usedNumbers.insert(entry.Letter);
        }
    }
    m_numberedBefore = true;
}

char16_t DiskEnumerator::NewNumber()
{
    char16_t number =
        m_usedNumbers.empty() ? char16_t{1} : static_cast<char16_t>(*m_usedNumbers.rbegin() + 1);
    while (ReadsAsLetter(number)) {
        ++number;
    }
    return number;
}

int DiskEnumerator::Next(VolumeRecord& outRecord)
{
    auto disk = Disks.lower_bound(m_cursorDisk);
    while (disk != Disks.end() &&
           (disk->first != m_cursorDisk || m_cursorEntry >= disk->second.size())) {
        if (disk->first == m_cursorDisk) {
            ++disk;
        }
        m_cursorDisk = disk != Disks.end() ? disk->first : m_cursorDisk;
        m_cursorEntry = 0;
    }
    if (disk == Disks.end()) {
        return 0;
    }
    outRecord = disk->second[m_cursorEntry++];
    return 1;
}

int DiskEnumerator::FindMissing(const std::vector<VolumeRecord>& previous,
                                std::vector<VolumeRecord>& outList)
{
    const int result = Enumerate();
    std::vector<VolumeRecord> current;
    Snapshot(current);
    bool missing = false;
    for (const VolumeRecord& volume : previous) {
        if (std::none_of(current.begin(), current.end(), [&volume](const VolumeRecord& entry) {
                return IsSameVolume(entry, volume);
            })) {
            outList.push_back(volume);
            missing = true;
        }
    }
    return missing ? 1 : result;
}

void DiskEnumerator::Snapshot(std::vector<VolumeRecord>& outList) const
{
    outList.clear();
    for (const auto& [disk, entries] : Disks) {
        outList.insert(outList.end(), entries.begin(), entries.end());
    }
}
