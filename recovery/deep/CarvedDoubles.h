// Files that were found twice: by their metadata and by their content.
#pragma once

#include "platform/ResultCode.h"
#include "recovery/RowSearch.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

// The absolute sector of a record's first data; none when it cannot be told.
using FirstDataSectorFunction =
    std::function<std::optional<std::uint64_t>(const FileRecord& record)>;

// Asked between two records; another answer than 0 ends the comparison, and nothing more is removed.
using KeepLooking = std::function<ResultCode()>;

// Of the items the first quickCount come from the quick engine, which knows its folders better. Removes each of the others that
// one of them shows too: one with the same extension, size and time of creation whose data begin in the same place. One for
// one: what quick has once and the others have twice stays once in each.
template <typename Item>
void DropAnalysedDoubles(std::vector<Item>& items,
                         std::size_t quickCount,
                         const FirstDataSectorFunction& firstDataSector,
                         const KeepLooking& keepLooking);

// Of the items the first knownCount are known, the others carved. Removes each carved one that begins where the data of a
// known one begins, when both have the same extension, or the known one is a camera's thumbnail ("thm") and the carved one
// a jpeg. Of two known ones on one
// sector the later counts. Item is FileRecord or FoundRow.
template <typename Item>
void DropCarvedDoubles(std::vector<Item>& items,
                       std::size_t knownCount,
                       const FirstDataSectorFunction& firstDataSector,
                       const KeepLooking& keepLooking);
