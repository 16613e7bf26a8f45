// Which sectors a scan could not read, in a file of its own in the scan's log folder, so that they can be read another day.
// See docs/formats.md.
#pragma once

#include "platform/ResultCode.h"
#include "storage/SectorRanges.h"

#include <filesystem>

// Writes the ranges, or removes the file when there are none.
[[nodiscard]] ResultCode WriteUnread(const std::filesystem::path& logFolder,
                                     const SectorRanges& ranges);
// Empty where there is no such file, or none of ours.
SectorRanges ReadUnread(const std::filesystem::path& logFolder);
