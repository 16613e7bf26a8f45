// The partitions and gaps of a disk or an image with a table of partitions.
#pragma once

#include "session/TargetList.h"

#include <functional>
#include <optional>
#include <vector>

// Numbers of parts count from 1 in the order of their starts; the whole has the one after the last. They are told by the
// target alone, so they are the same in each run.
struct TargetParts
{
    std::vector<TargetRow> rows;  // partitions, and all between them; empty without a table
    TargetRow whole;
};

// How much is to be known of the parts.
enum class PartFacts
{
    Places,  // and the names of their file systems
    Space    // and how full they are, which is read from their tables
};

// Of what is no whole disk or image, or cannot be read, nothing. Memory that runs out too counts as no table. Once goesOn says
// no, nobody learns how full the parts are.
TargetParts
PartsOf(const ScanTarget& target, PartFacts facts, const std::function<bool()>& goesOn = {});
// What is scanned as that part. Its letter is one for each part; that of the whole is that of the target.
ScanTarget TargetOfPart(const ScanTarget& target, const TargetRow& part);
// The part with that number, or the whole.
std::optional<ScanTarget> FindPart(const ScanTarget& target, std::uint32_t number);
