// Flash movies: "FWS" or, compressed, "CWS", the version, and the length in bytes once unpacked.
#include "platform/ByteView.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

#include <algorithm>

namespace {

constexpr std::int32_t SmallestSize = 8;
constexpr std::uint8_t FirstCompressedVersion = 6;
constexpr std::uint8_t LastVersion = 15;
constexpr std::uint32_t LargestClaim = 268'435'456;

}  // namespace

FileTypeId DetectSwf(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize) {
        return FileTypeId::None;
    }
    const std::uint8_t version = sector.U8(3);
    const bool packed =
        sector.Matches(0, "CWS") && version >= FirstCompressedVersion && version <= LastVersion;
    const bool plain = sector.Matches(0, "FWS") && version < FirstCompressedVersion;
    return packed || plain ? FileTypeId::Swf : FileTypeId::None;
}

std::int64_t LengthSwf(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (sector.U8(0) != 'F') {
        return CarveContext::Instance().sectorSize;
    }
    return std::min(sector.U32(4), LargestClaim);
}
