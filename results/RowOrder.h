// How the list of found files is sorted.
#pragma once

#include "results/RowColumns.h"

#include <cstdint>
#include <vector>

// 1 upward, -1 downward; a header that was never clicked is 0.
using SortDirection = int;

// After a click on a header: names and types begin upward, sizes and dates downward. Paths, which are not known, never change.
SortDirection NextDirection(FileColumn header, SortDirection now);

// Of each row its rank among the others under that header, upward; rows that are equal have the same. What a row's rank is
// compared by is worked out once for each, since a hundred thousand of them are compared some two million times.
std::vector<std::uint32_t> SortRanks(const std::vector<const FileRecord*>& rows, FileColumn header);
