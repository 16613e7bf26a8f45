// mp3 with an ID3v2 tag in front: "ID3", two version bytes, flags, four size bytes of seven bits. At the end there may
// be an ID3v1 tag of 128 bytes that opens with "TAG". Without the first tag nothing is known.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

constexpr std::size_t TagHeadBytes = 10;
constexpr std::int64_t Budget = 2'147'483'648;
// The three letters are counted on top of the tag's 128 bytes: recorded files end three bytes past their tag.
constexpr std::size_t EndTagBytes = 3 + 128;

}  // namespace

FileTypeId DetectMp3(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (!sector.Matches(0, "ID3") || !sector.Covers(0, TagHeadBytes)) {
        return FileTypeId::None;
    }
    const bool version = sector.U8(3) < 255 && sector.U8(4) < 255;
    const bool flags = (sector.U8(5) & 0x1F) == 0;
    const bool tagSize = (sector.U32(6) & 0x80808080) == 0;
    return version && flags && tagSize ? FileTypeId::Mp3 : FileTypeId::None;
}

std::int64_t LengthMp3(const std::uint8_t*, std::int32_t)
{
    static MarkFinder tags("TAG");
    std::int64_t tagEnd = 0;
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        // The first of a block alone; a later block's overrides it, and none ends the scan.
        const std::size_t at = tags.Find(scan.Searched());
        if (at != NotFound) {
            tagEnd = scan.Scanned() + static_cast<std::int64_t>(at + EndTagBytes);
        }
    }
    return tagEnd != 0 && tagEnd < scan.Length() ? tagEnd : scan.Length();
}
