// What the functions of the signature table know beyond their two arguments.
#pragma once

#include "recovery/FileRecoveryParse.h"
#include "recovery/carving/FreeStretch.h"
#include "recovery/carving/SectorWindow.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

// The stretches of transport streams that were carved. Kept merged: a damaged disk can hold hundreds of thousands.
class TsRanges
{
public:
    // Both sectors belong to the stretch.
    void Add(std::uint64_t firstLba, std::uint64_t lastLba);
    bool Contains(std::uint64_t lba) const;
    void Clear() { m_ranges.clear(); }
    // Told of each stretch that is added; none at first.
    using AddedFunction = std::function<void(std::uint64_t firstLba, std::uint64_t lastLba)>;
    void SetOnAdded(AddedFunction onAdded) { m_onAdded = std::move(onAdded); }

private:
    std::map<std::uint64_t, std::uint64_t> m_ranges;  // first to last, disjoint
    AddedFunction m_onAdded;
};

// One for the process: only one deep scan can run at a time, and no head may be verified while it carves. Nothing
// here is locked.
struct CarveContext
{
    static CarveContext& Instance();

    std::int32_t sectorSize = 512;
    SectorSource* source = nullptr;  // set on every call
    std::uint64_t startLba = 0;      // of the candidate head
    std::uint64_t currentLba = 0;    // of the sector being looked at; the boundary scan moves it
    // 1 unless the last file carved was no transport stream, or a head was verified since.
    std::int32_t TsRunHead = 1;
    // 1 while an mts file is measured, and until the table has been walked for the next sector.
    std::int32_t InsideMts = 0;
    TsRanges TsRangeList;     // emptied by the deep pass at its start
    FreeStretch freeStretch;  // of the file measured last; emptied likewise

    // As any sector leaves the two flags that begins no file.
    void PassOverSectors()
    {
        TsRunHead = 1;
        InsideMts = 0;
    }

    std::uint64_t sectorsDone = 0;
    std::uint64_t sectorsTotal = 0;
    std::int32_t secondsLeft = -1;
    std::uint64_t filesFound = 0;
    ResultCode lastCallbackResult = ResultSuccess;
    ProgressCallback scanCallback = nullptr;
    FileProgressCallback fileCallback = nullptr;
    void* callbackContext = nullptr;
    std::int32_t progressRange = 90;

    SectorWindow window;

    // Sectors of the source for a detector or classifier, valid until the next call; empty when reading fails.
    ByteView ReadSectors(std::uint64_t lba, std::int32_t sectorCount)
    {
        return source != nullptr ? window.Read(*source, lba, sectorCount, sectorSize) : ByteView();
    }
};
