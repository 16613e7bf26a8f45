// The lowest layer of NTFS: repairing a FILE record in place and decoding a run list. Tolerant on purpose: a broken
// structure ends the decoding quietly.
#pragma once

#include "platform/ByteView.h"
#include "platform/ResultCode.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// Private result codes of this layer. They never reach a file callback.
inline constexpr ResultCode ResultNoFileRecord = -1;  // no FILE magic
inline constexpr ResultCode ResultAttributeMissing =
    -100;  // the wanted attribute is not in the record
inline constexpr ResultCode ResultDataNotResident =
    -101;  // the data lies in runs, or there is none

// Every read of a single record fetches this much, whatever the record's size.
inline constexpr std::size_t RecordReadBytes = 8192;

// One entry of a run list, in clusters.
struct NtfsRun
{
    std::uint64_t Length = 0;  // 32 bits of it at most
    std::int64_t Offset =
        0;  // from the start of the run before, as stored; every user adds them up

    bool operator==(const NtfsRun&) const = default;
};

// In the order on disk. Extents of several attributes simply follow one another.
using RunList = std::vector<NtfsRun>;

// An unsigned number of as many bytes as the view has, eight at most.
std::uint64_t LittleEndian(ByteView field);

// One entry of a run list as it stands: a header with the widths of two fields, and the fields.
struct RunEntry
{
    ByteView length;
    ByteView offset;  // empty in a sparse run

    std::size_t Size() const { return 1 + length.Size() + offset.Size(); }
};
// Nothing at the end of the list, for a field above largestField bytes, and for one that the view does not hold whole.
std::optional<RunEntry> ReadRunEntry(ByteView list, std::size_t at, std::size_t largestField);

// One engine owns it.
class NtfsRecordCodec
{
public:
    // No list grows beyond this. One attribute gives a few hundred runs; lists that lists lead to could go on for ever.
    static constexpr std::size_t LongestRunList = std::size_t{1} << 20;

    ResultCode SetSectorSize(std::uint32_t bytesPerSector);

    // Puts the words from offset 50 back over the sector tails. Torn records are not noticed: the update sequence
    // number is compared with nothing. -1 for an empty record or one that begins with 0, whose tails become 0.
    ResultCode ApplyFixups(std::span<std::uint8_t> record) const;

    // Appends the runs of a non-resident attribute; the view begins at the attribute and goes to the end of the
    // buffer. An attribute as long as a sector or longer yields none: its data come back empty.
    void DecodeRunList(ByteView attribute, RunList& outRuns) const;

    std::uint32_t FixupCount = 2;
    std::uint32_t SectorSize = 512;
};
