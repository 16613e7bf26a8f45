// What stands on one disk: its partitions, or the file system that it holds without a table.
#pragma once

#include "platform/FileHandle.h"
#include "platform/StorageMap.h"
#include "storage/VolumeRecord.h"

#include <cstdint>
#include <functional>
#include <vector>

// The volumes of a disk in the order of its table. StartSector and SectorCount hold bytes here: the list converts them
// when it looks for gaps. Where the user may not read the disk, what the system's own tables tell has to do.
// outSizeBytes and outSectorSize are the disk's. goesOn is asked at each read; once it says no, nothing more is read.
std::vector<VolumeRecord> ReadVolumes(const BlockDevice& disk,
                                      std::uint32_t diskNumber,
                                      const StorageMap& storage,
                                      std::uint64_t* outSizeBytes,
                                      std::uint32_t* outSectorSize,
                                      const std::function<bool()>& goesOn);

// The same of what a table on an opened disk or image names, and of nothing else; empty without a table. Of an image device has
// nothing but a sector size. Without goesOn's yes nobody learns how full the volumes are.
std::vector<VolumeRecord> ReadTableOf(FileHandle disk,
                                      const BlockDevice& device,
                                      std::uint32_t diskNumber,
                                      const StorageMap& storage,
                                      const std::function<bool()>& goesOn);

// The first mount of the file system that begins at a byte of a disk; null when there is none, or when others are mounted
// over all of them, so that no path leads there.
const MountEntry* FindMountAt(const StorageMap& storage,
                              const std::string& diskDeviceNumber,
                              std::uint64_t startByte);
