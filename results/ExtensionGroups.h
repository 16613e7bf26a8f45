// The found files by their kind: what a node of the type tree stands for.
#pragma once

#include "recovery/FoundRow.h"

#include <map>
#include <string>
#include <string_view>
#include <vector>

// Rows of the results, in their order. They stay good as long as the results do.
using FileGroup = std::vector<const FoundRow*>;
using ExtensionGroups = std::map<std::string, FileGroup, std::less<>>;

// What follows the last dot, in small letters, other spellings of a type put together. A name without a dot stands as a whole,
// so that it is a group of its own.
std::string GroupKeyOf(std::string_view name);

ExtensionGroups BuildGroups(const std::vector<FoundRow>& results);
