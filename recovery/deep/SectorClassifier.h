// Shows each sector of a block to whichever analyser it fits: NTFS record, directory start, directory sector, and the
// carver for all the rest.
#pragma once

#include "recovery/carving/CarveDriver.h"
#include "recovery/carving/FileTypeRecovery.h"
#include "recovery/fat/ProfessionalFatRecovery.h"
#include "recovery/ntfs/ProfessionalNtfsRecovery.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <span>

class ScanJournal;

// The three analysers and the source that records over a block's end are read again from.
struct Analysers
{
    CProfessionalFatRecovery& fat;
    CProfessionalNtfsRecovery& ntfs;
    CFileTypeRecovery& carver;
    SectorSource& source;
    std::int32_t sectorSize;
    ScanJournal* journal =
        nullptr;  // notes what the first two are shown; null while it is shown again
};

// Classes the sectors of a block that begins at firstLba. outSkipSectors is how far the pass goes on after the block:
// positive after a carved file that runs over its end, negative to come back to the sector whose measuring was
// cancelled. 0, ResultCancelled, or the last code of an analyser, which stops nothing. NTFS records are repaired in
// place.
ResultCode ClassifyBlock(const Analysers& analysers,
                         std::span<std::uint8_t> block,
                         std::uint64_t firstLba,
                         const CarveProgress& progress,
                         std::int64_t& outSkipSectors,
                         std::int64_t& inOutFilesFound);
