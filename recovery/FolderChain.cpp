#include "recovery/FolderChain.h"

#include <vector>

std::uint32_t CountLevels(std::uint32_t cluster,
                          KnownDepths& known,
                          const std::function<FolderStep(std::uint32_t cluster)>& stepFrom)
{
    std::vector<std::uint32_t> passed;
    std::unordered_map<std::uint32_t, std::size_t> places;
    std::uint32_t base = 0;
    for (std::uint32_t current = cluster;;) {
        if (const auto found = known.find(current); found != known.end()) {
            base = found->second;
            break;
        }
        const FolderStep step = stepFrom(current);
        if (!step.isLevel) {
            known[current] = 0;
            break;
        }
        places[current] = passed.size();
        passed.push_back(current);
        if (!step.hasParent) {
            break;
        }
        if (const auto ring = places.find(step.parent); ring != places.end()) {
            // Walked from any of its folders, a ring is as deep as it is long.
            base = static_cast<std::uint32_t>(passed.size() - ring->second);
            for (std::size_t i = ring->second; i < passed.size(); ++i) {
                known[passed[i]] = base;
            }
            passed.resize(ring->second);
            break;
        }
        current = step.parent;
    }
    for (auto folder = passed.rbegin(); folder != passed.rend(); ++folder) {
        known[*folder] = ++base;
    }
    return base;
}
