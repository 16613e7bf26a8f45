// asf, wmv and wma: a header object of 16 identifying bytes and a size; among the objects in it the file
// properties, which hold the file's size at 40 and flags at 88 (bit 0: broadcast, size not known).
#include "recovery/carving/ByteSearch.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

#include <algorithm>

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 24;
constexpr std::size_t FirstObject = 30;
constexpr std::size_t PropertiesBytes = 92;  // as far as the flags reach
constexpr std::uint64_t LargestClaim = 268'435'456;
constexpr std::string_view HeaderObject =
    "\x30\x26\xB2\x75\x8E\x66\xCF\x11\xA6\xD9\x00\xAA\x00\x62\xCE\x6C"sv;
constexpr std::string_view PropertiesObject =
    "\xA1\xDC\xAB\x8C\x47\xA9\xCF\x11\x8E\xE4\x00\xC0\x0C\x20\x53\x65"sv;

}  // namespace

FileTypeId DetectAsf(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestSize && ByteView(buffer, size).Matches(0, HeaderObject);
    return hit ? FileTypeId::Asf : FileTypeId::None;
}

std::int64_t LengthAsf(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    const std::size_t at = FindBytes(sector, PropertiesObject, FirstObject);
    const bool known =
        at != NotFound && sector.Covers(at, PropertiesBytes) && (sector.U32(at + 88) & 1) == 0;
    if (!known) {
        return CarveContext::Instance().sectorSize;
    }
    return static_cast<std::int64_t>(std::min(sector.U64(at + 40), LargestClaim));
}
