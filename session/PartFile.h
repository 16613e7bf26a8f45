// A file that is being restored lies under a name that tells everybody so, until it is done. For this room alone.
#pragma once

#include <filesystem>

// A name in the folder that nothing has. It is hidden, and holds this process's number.
std::filesystem::path PartFileIn(const std::filesystem::path& folder);
// Removes what processes that are gone, by a kill or a power cut, have left under such names.
void RemoveLeftParts(const std::filesystem::path& folder);
