// A row of what a search gives: a found file, and where its record stands.
#pragma once

#include "recovery/FileRecord.h"

#include <cstdint>
#include <optional>

// No two records of a target share one.
struct StorePlace
{
    std::uint32_t store = 0;  // EngineKindFastNtfs and so on: each engine has a store of its own
    std::uint32_t place = 0;  // in that store, counted from 1
};

inline bool operator==(const StorePlace& left, const StorePlace& right)
{
    return left.store == right.store && left.place == right.place;
}

struct FoundRow
{
    FileRecord record;
    StorePlace at;
    std::optional<StorePlace> doubleOf;  // the row that shows the same file
};
