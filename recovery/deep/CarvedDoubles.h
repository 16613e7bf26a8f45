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

// Removes from analysed each row that a row in quick, which knows its folders better, shows too: one with the same
// extension, size and time of creation whose data begin in the same place. One for one: what quick has once and analysed
// twice stays once in each.
template <typename Item>
void DropAnalysedDoubles(const std::vector<Item>& quick,
                         const FirstDataSectorFunction& firstDataSector,
                         const KeepLooking& keepLooking,
                         std::vector<Item>& analysed);

// Removes from carved each row that begins where the data of a row in known begins, when both have the same
// extension, or the known one is a camera's thumbnail ("thm") and the carved one a jpeg. Of two known rows on one
// sector the later counts. Item is FileRecord or FoundRow.
template <typename Item>
void DropCarvedDoubles(const std::vector<Item>& known,
                       const FirstDataSectorFunction& firstDataSector,
                       const KeepLooking& keepLooking,
                       std::vector<Item>& carved);
