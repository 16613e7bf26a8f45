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

// Of the items the first are known, the others carved. Removes each carved one that begins where the data of a known one begins,
// when both have the same extension, or the known one is a camera's thumbnail ("thm") and the carved one a jpeg. Of two known ones on one
// sector the later counts. Item is FileRecord or FoundRow.
template <typename Item>
void DropCarvedDoubles(std::vector<Item>& items,
                       std::size_t knownCount,
                       const FirstDataSectorFunction& firstDataSector,
                       const KeepLooking& keepLooking);
