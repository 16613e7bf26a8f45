// Windows bitmaps: "BM" (or "BA"), the file size at 2, four zero bytes at 6, and the size of the info header at 14.
#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

#include <algorithm>

namespace {

constexpr std::int32_t SmallestSize = 40;
constexpr std::uint32_t InfoHeaderBytes =
    40;  // older and newer headers have other sizes and are not taken
constexpr std::uint32_t LargestClaim = 134'217'728;

}  // namespace

FileTypeId DetectBmp(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    const bool named = sector.Matches(0, "BM") || sector.Matches(0, "BA");
    const bool hit =
        named && size >= SmallestSize && sector.U32(6) == 0 && sector.U32(14) == InfoHeaderBytes;
    return hit ? FileTypeId::Bmp : FileTypeId::None;
}

std::int64_t LengthBmp(const std::uint8_t* buffer, std::int32_t size)
{
    // 0 when the field is not there.
    return std::min(ByteView(buffer, size).U32(2), LargestClaim);
}
