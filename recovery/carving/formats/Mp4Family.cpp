// mp4, 3gp and mov: a tree of boxes, each a big-endian length and a four-letter name. The first is "ftyp", whose
// brand at 8 tells the kinds apart.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

#include <algorithm>

namespace {

constexpr std::int32_t SmallestSize = 32;
constexpr std::int32_t SmallestMovSize = 16;
constexpr std::int64_t Mp4Budget = 4'294'967'296;
// What some encoders leave in a trailing box; a file without it ends at the boundary.
constexpr std::string_view EncoderText = "freeIsoMedia File Produced";

bool HasBrand(ByteView sector, std::string_view brand)
{
    return sector.Matches(4, "ftyp") && sector.Matches(8, brand);
}

std::int64_t CountNonZero(ByteView bytes)
{
    const std::span<const std::uint8_t> all = bytes.Span();
    return std::count_if(all.begin(), all.end(), [](std::uint8_t byte) { return byte != 0; });
}

}  // namespace

FileTypeId DetectMp4(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestSize && HasBrand(ByteView(buffer, size), "iso");
    return hit ? FileTypeId::Mp4 : FileTypeId::None;
}

std::int64_t LengthMp4(const std::uint8_t*, std::int32_t)
{
    static MarkFinder texts(EncoderText);
    LengthScan scan(Mp4Budget);
    while (scan.NextBlock()) {
        const std::size_t at = texts.Find(scan.Searched());
        if (at != NotFound) {
            const std::size_t end = at + EncoderText.size();
            // Every byte that is not zero up to the block's end counts, not the run up to the first zero.
            scan.StopAt(scan.Scanned() + static_cast<std::int64_t>(end) +
                        CountNonZero(scan.Searched().bytes.Sub(end)));
        }
    }
    return scan.Length();
}

FileTypeId Detect3gp(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestSize && HasBrand(ByteView(buffer, size), "3gp");
    return hit ? FileTypeId::ThreeGp : FileTypeId::None;
}

FileTypeId DetectMov(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestMovSize) {
        return FileTypeId::None;
    }
    // The name is looked for at 0, not after a length word at 4: a movie that has it there is not found by it.
    const bool hit = sector.Matches(0, "moov") || HasBrand(sector, "qt  ");
    return hit ? FileTypeId::Mov : FileTypeId::None;
}
