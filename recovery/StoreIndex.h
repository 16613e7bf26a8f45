// What the two index files of a store hold, in memory: which records lie in which folder, and the folders' names. The
// store that is being written and those that read it share one.
#pragma once

#include "recovery/FileRecord.h"

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

// By folder key (see MakeStoreKey), in ascending order: the numbers of the records below it, in the order they were linked.
using StoreRelation = std::map<std::uint64_t, std::vector<std::uint32_t>>;

constexpr std::uint64_t MakeStoreKey(std::uint32_t depth, std::uint32_t nodeId)
{
    return std::uint64_t{depth} << 32 | nodeId;
}

// All fields are read and written under the lock.
struct StoreIndex
{
    mutable std::mutex lock;
    StoreRelation relation;
    std::vector<DirInfoRecord> dirInfo;  // in the order of linking; the first of a folder counts
    std::uint64_t linkVersion = 0;       // counts the records linked
    std::uint64_t writeVersion = 0;      // counts the writes to the main file
};
