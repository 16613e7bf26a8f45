// TrueType fonts: 00 01 00 00, big-endian counts of the table directory, and the directory of 16 bytes a table.
#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 16;
constexpr std::string_view Version = "\0\1\0\0"sv;

}  // namespace

FileTypeId DetectTtf(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize || !sector.Matches(0, Version)) {
        return FileTypeId::None;
    }
    const std::size_t tables = sector.U16Be(4);
    const bool counts =
        tables != 0 && sector.U16(6) != 0 && sector.U16(8) != 0 && sector.U16(10) != 0;
    // The first word after the directory must be the version again: fonts that begin with such a table are taken.
    const bool hit =
        counts && tables * 16 + 16 <= sector.Size() && sector.Matches(tables * 16 + 12, Version);
    return hit ? FileTypeId::Ttf : FileTypeId::None;
}
