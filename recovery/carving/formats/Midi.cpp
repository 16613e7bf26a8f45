// Standard midi files: "MThd", its length, format, track count at 10, division; then "MTrk" chunks.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

#include <algorithm>

namespace {

constexpr std::int32_t SmallestSize = 16;
constexpr std::int64_t Budget = 8'388'608;
constexpr std::int64_t HeadBytes = 14;
constexpr std::string_view TrackMark = "MTrk";

// Big-endian; bytes past the block count as zeros.
std::int64_t PaddedWord(ByteView block, std::size_t offset)
{
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        word = word << 8 | block.U8(offset + i);
    }
    return word;
}

}  // namespace

FileTypeId DetectMidi(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    // The length word is big-endian in the format, so a well-formed head has 0x06000000 here and is not taken: such
    // files get no record.
    const bool hit = size >= SmallestSize && sector.Matches(0, "MThd") && sector.U32(4) == 6 &&
                     sector.Matches(14, TrackMark);
    return hit ? FileTypeId::Midi : FileTypeId::None;
}

std::int64_t LengthMidi(const std::uint8_t* buffer, std::int32_t size)
{
    // May start at 0 and goes on below it; then no find ends the file.
    std::int64_t tracksLeft = ByteView(buffer, size).U16Be(10);
    std::int64_t sum = HeadBytes;
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        const ByteView block = scan.Searched().bytes;
        std::size_t at = FindBytes(block, TrackMark);
        bool done = false;
        while (at != NotFound && !done) {
            --tracksLeft;
            if (!block.Covers(at + 4, 4)) {
                break;
            }
            // Not the chunk's length field but the word after it: the lengths in records rest on that.
            sum += 8 + PaddedWord(block, at + 8);
            done = tracksLeft == 0;
            at = FindBytes(block, TrackMark, at + 4);
        }
        if (done) {
            scan.StopAt(std::min(sum, scan.Length()));
        } else {
            sum += static_cast<std::int64_t>(scan.Block().Size());
        }
    }
    return scan.Length();
}
