// Counts the levels of a chain of folders, each of which names the one above it.
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>

// What one folder says of the way up.
struct FolderStep
{
    bool isLevel = false;    // false: the root, or nothing that counts; the chain ends before it
    bool hasParent = false;  // false: the chain ends here
    std::uint32_t parent = 0;
};

// Depths found so far, by cluster.
using KnownDepths = std::unordered_map<std::uint32_t, std::uint32_t>;

// The levels from cluster up to where its chain ends or closes on itself. stepFrom gives the same answer for a cluster
// each time; no folder is asked twice.
std::uint32_t CountLevels(std::uint32_t cluster,
                          KnownDepths& known,
                          const std::function<FolderStep(std::uint32_t cluster)>& stepFrom);
