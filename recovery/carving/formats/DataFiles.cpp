// Documents, disk images, databases and mail stores that are known by fixed bytes. They end running files and are never
// carved.
#include "platform/ByteView.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 16;
constexpr std::uint16_t MailStoreClient = 0x4D53;

}  // namespace

FileTypeId DetectPdf(const std::uint8_t* buffer, std::int32_t size)
{
    return ByteView(buffer, size).Matches(0, "%PDF-") ? FileTypeId::Pdf : FileTypeId::None;
}

FileTypeId DetectGho(const std::uint8_t* buffer, std::int32_t size)
{
    return ByteView(buffer, size).Matches(0, "\xFE\xEF\0\0"sv) ? FileTypeId::Gho : FileTypeId::None;
}

FileTypeId DetectSqlite(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = ByteView(buffer, size).Matches(0, "SQLite format 3\0"sv);
    return hit ? FileTypeId::Sqlite : FileTypeId::None;
}

FileTypeId DetectDbx(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit = size >= SmallestSize && ByteView(buffer, size).Matches(0, "\xCF\xAD\x12\xFE");
    return hit ? FileTypeId::Dbx : FileTypeId::None;
}

FileTypeId DetectPst(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    const bool hit =
        size >= SmallestSize && sector.Matches(0, "!BDN") && sector.U16(8) == MailStoreClient;
    return hit ? FileTypeId::Pst : FileTypeId::None;
}
