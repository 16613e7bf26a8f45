// Archives by their heads. They end running files and are never carved.
#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestGzipSize = 16;
constexpr std::int32_t SmallestZipSize = 48;
constexpr std::int32_t SmallestCabSize = 36;
constexpr std::uint8_t LastNamedSystem = 13;
constexpr std::uint8_t UnknownSystem = 255;

}  // namespace

// No flags or a name only; the strongest or the fastest compression; a known system.
FileTypeId DetectGzip(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestGzipSize || !sector.Matches(0, "\x1F\x8B\x08")) {
        return FileTypeId::None;
    }
    const bool flags = sector.U8(3) == 0 || sector.U8(3) == 8;
    const bool level = sector.U8(8) == 2 || sector.U8(8) == 4;
    const bool system = sector.U8(9) <= LastNamedSystem || sector.U8(9) == UnknownSystem;
    return flags && level && system ? FileTypeId::Gzip : FileTypeId::None;
}

FileTypeId Detect7z(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = ByteView(buffer, size).Matches(0, "\x37\x7A\xBC\xAF\x27");
    return hit ? FileTypeId::SevenZip : FileTypeId::None;
}

FileTypeId DetectZip(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestZipSize && ByteView(buffer, size).Matches(0, "PK\3\4");
    return hit ? FileTypeId::Zip : FileTypeId::None;
}

FileTypeId DetectRar(const std::uint8_t* buffer, std::int32_t size)
{
    return ByteView(buffer, size).Matches(0, "Rar!\x1A\x07\0"sv) ? FileTypeId::Rar
                                                                 : FileTypeId::None;
}

FileTypeId DetectCab(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestCabSize && ByteView(buffer, size).Matches(0, "MSCF");
    return hit ? FileTypeId::Cab : FileTypeId::None;
}
