// Media formats that are known by a few fixed bytes at their start and by nothing else.
#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 16;
constexpr std::int32_t SmallestPsdSize = 40;
constexpr std::string_view MxfPartition =
    "\x06\x0E\x2B\x34\x02\x05\x01\x01\x0D\x01\x02\x01\x01\x02\x04\x00"sv;

FileTypeId HitIf(bool hit, FileTypeId typeId)
{
    return hit ? typeId : FileTypeId::None;
}

}  // namespace

FileTypeId DetectFlv(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    // Version 1, any flags, and a header of nine bytes.
    const bool hit =
        size >= SmallestSize && sector.Matches(0, "FLV\1") && sector.Matches(5, "\0\0\0\x09"sv);
    return HitIf(hit, FileTypeId::Flv);
}

FileTypeId DetectMkv(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestSize && ByteView(buffer, size).Matches(0, "\x1A\x45\xDF\xA3");
    return HitIf(hit, FileTypeId::Mkv);
}

FileTypeId DetectMxf(const std::uint8_t* buffer, std::int32_t size)
{
    return HitIf(ByteView(buffer, size).Matches(0, MxfPartition), FileTypeId::Mxf);
}

// One fixed frame header; no other stream of frames is known.
FileTypeId DetectMp2(const std::uint8_t* buffer, std::int32_t size)
{
    return HitIf(ByteView(buffer, size).Matches(0, "\xFF\xFD\xE4\x00"sv), FileTypeId::Mp2);
}

FileTypeId DetectMmf(const std::uint8_t* buffer, std::int32_t size)
{
    return HitIf(ByteView(buffer, size).Matches(0, "MMMD"), FileTypeId::Mmf);
}

FileTypeId DetectPsd(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestPsdSize && ByteView(buffer, size).Matches(0, "8BPS");
    return HitIf(hit, FileTypeId::Psd);
}

// Camera raw files that are built on tiff come this way too.
FileTypeId DetectTiff(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    return HitIf(sector.Matches(0, "MM\0\x2A"sv) || sector.Matches(0, "II\x2A\0"sv),
                 FileTypeId::Tiff);
}
