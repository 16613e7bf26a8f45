// What the TARGET of a command line means: a number of the list of targets, a device node, an image file.
#pragma once

#include "cli/Command.h"
#include "recovery/ScanTarget.h"
#include "storage/PathTouches.h"

#include <cstdint>
#include <optional>
#include <string>

// Fills Volume, or ImagePath and ImageId. A partition becomes a range of its disk. Nothing is opened for reading but an
// image; that the target is there is all that is known afterwards.
[[nodiscard]] std::optional<Refusal> ResolveTarget(const std::string& text, ScanTarget& outTarget);

// Why a target cannot be used, from the result of opening it; ResultSuccess stands for an unknown file system.
Refusal WhyNotOpened(const std::string& text, ResultCode why);

// Bytes per sector of the disk that a volume lies on.
std::uint32_t SectorSizeOf(const VolumeRecord& volume);
// Whether writing to a path would write onto the target.
Touching PathTouchesTarget(const std::filesystem::path& path, const ScanTarget& target);
