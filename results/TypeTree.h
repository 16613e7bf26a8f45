// What stands in the tree of found types, as values.
#pragma once

#include "results/ExtensionGroups.h"
#include "results/TypeFilterMap.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

struct TypeTreeNode
{
    std::string text;                  // "JPG (12)"
    std::string image;                 // of its folder button
    std::string extensions;            // of its option
    const FileGroup* group = nullptr;  // as long as the groups stay
};

struct TypeTreeCategory
{
    std::vector<TypeTreeNode> nodes;  // none: it is not shown
    std::size_t files = 0;
};

using TypeTree = std::array<TypeTreeCategory, TypeCategoryCount>;

// Groups in the order of their keys. One whose key has no option is left out, and stays behind in the filter.
TypeTree BuildTypeTree(const ExtensionGroups& groups, TypeFilterMap& filter);
// "Photos (12)"
std::string WithCount(std::string_view text, std::size_t count);
