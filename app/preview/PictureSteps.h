// Which picture of a list comes next.
#pragma once

#include "recovery/FoundRow.h"

#include <cstddef>
#include <optional>
#include <span>

// From the one after, or before, the current one; past either end it goes on at the other. A current one that is not in the
// list stands outside of it. Nothing when there is no picture at all; the current one when it is the only one.
std::optional<std::size_t>
StepToPicture(std::span<const FoundRow> rows, const FoundRow& current, bool isForward);
