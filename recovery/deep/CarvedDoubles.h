// Files that were found twice: by their metadata and by their content.
#pragma once

#include "recovery/FileRecord.h"

#include <cstdint>
#include <functional>
#include <optional>

// The absolute sector of a record's first data; none when it cannot be told.
using FirstDataSectorFunction =
    std::function<std::optional<std::uint64_t>(const FileRecord& record)>;

// Removes from carved each record that begins where the data of a record in known begins, when both have the same
// extension, or the known one is a camera's thumbnail ("thm") and the carved one a jpeg. Of two known records on one
// sector the later counts.
void DropCarvedDoubles(const FileRecordList& known,
                       const FirstDataSectorFunction& firstDataSector,
                       FileRecordList& carved);
