// Where the data of found files lie on the source, told without reading them: what shows whether two rows bring the same bytes.
#pragma once

#include "recovery/FileRecord.h"

#include <cstdint>
#include <optional>
#include <vector>

// A stretch of the source, in bytes of the whole drive or file.
struct BytePlace
{
    std::uint64_t position = 0;
    std::uint64_t length = 0;
};

using BytePlaces = std::vector<BytePlace>;  // in the order of the file

// Appends sectors, joined to what they follow. False for what no source has.
bool AddPlace(BytePlaces& places,
              std::uint64_t sector,
              std::uint64_t sectors,
              std::uint32_t sectorSize);
// The first bytes of both come from the same places; false where one of them has fewer.
bool BeginAlike(const BytePlaces& left, const BytePlaces& right, std::uint64_t bytes);

// Of an engine that joins what several have found.
class ITellsDataPlaces
{
public:
    ITellsDataPlaces() = default;
    ITellsDataPlaces(const ITellsDataPlaces&) = delete;
    ITellsDataPlaces& operator=(const ITellsDataPlaces&) = delete;

    // Where a record's data begin, in bytes of the whole drive or file; kept where telling it takes a read. None when it
    // cannot be told.
    virtual std::optional<std::uint64_t> FirstDataByte(const FileRecord& record) = 0;
    // Where restoring takes the first bytes from. None for data that lie in their record, and when not all of them can be
    // read.
    virtual std::optional<BytePlaces> PlacesOf(const FileRecord& record, std::uint64_t bytes) = 0;

protected:
    ~ITellsDataPlaces() = default;
};
