// The list of what can be scanned: partitions, the gaps between them, and disks without any, with all that a user tells
// them apart by.
#pragma once

#include "session/Progress.h"
#include "session/ScanTarget.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

class DiskEnumerator;

struct DiskFacts
{
    std::uint32_t number = 0;
    std::filesystem::path node;
    std::string model;  // empty where the hardware does not tell one
    std::uint64_t sizeBytes = 0;
    std::uint32_t sectorSize = 512;
    bool removable = false;
    bool readable = false;  // by this user as it stands, without asking for more rights
};

enum class TargetKind
{
    Partition,
    Gap,
    Disk
};

struct TargetRow
{
    TargetKind kind = TargetKind::Disk;
    char16_t number = 0;  // the same as long as the program runs
    DiskFacts disk;
    std::filesystem::path imagePath;  // of a part of an image
    std::filesystem::path node;       // the partition's where the system has one, else the disk's
    std::uint8_t partitionType =
        0;  // 7 NTFS, 11 FAT32, 6 FAT, else the table's byte; 0 without a file system
    std::uint64_t startSector = 0;
    std::uint64_t sectorCount = 0;
    std::uint64_t totalBytes = 0;  // as the file system counts, else the length
    std::uint64_t usedBytes = 0;
    std::uint64_t freeBytes = 0;
    bool spaceKnown = false;  // a file system tells them; without one all is free
    std::string fileSystem;
    std::string label;
    std::string mountPoint;  // empty when it is not mounted

    bool HasFileSystem() const { return partitionType != 0; }
};

ScanTarget TargetOf(const TargetRow& row);
// An image file, by the path that an earlier scan of it is found again by.
ScanTarget TargetOfImage(const std::filesystem::path& file, char16_t id);
// All of a disk up to its last sector; without a length when there is none of that number.
ScanTarget WholeDisk(std::uint32_t diskNumber);

enum class ListEnd
{
    Complete,
    Stopped,
    NotListed,  // the system does not list its disks
    OutOfMemory,
    Failed
};

// What is known of a volume, put into a row. For this room alone.
void FillRow(TargetRow& row, const struct VolumeRecord& volume);

struct TargetList
{
    ListEnd end = ListEnd::Complete;
    std::vector<TargetRow> rows;  // disk by disk, by their start
};

// Rows for the whole of those disks of a list that stand in it only by their parts, to their last sectors. Their numbers follow
// all others of the list.
std::vector<TargetRow> WholeDiskRows(const TargetList& list);

// Keep one for the whole run, so that rows keep their numbers. Its lists come one at a time, from any thread.
class TargetLister
{
public:
    TargetLister();
    TargetLister(const TargetLister&) = delete;
    TargetLister& operator=(const TargetLister&) = delete;
    ~TargetLister();

    // Reads the tables of all disks, which can take long on a large or a failing one. Progress counts disks.
    TargetList List(const ProgressFunction& progress);

private:
    TargetList ListGuarded(const ProgressFunction& progress);

    std::mutex m_mutex;
    std::unique_ptr<DiskEnumerator> m_enumerator;
};
