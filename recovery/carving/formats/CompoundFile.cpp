#include "recovery/carving/formats/CompoundFile.h"

#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestFlaSize = 16;
constexpr std::int32_t SmallestOleSize = 8;
constexpr std::size_t DirectorySectorField = 48;
constexpr std::size_t EntryBytes = 128;
constexpr std::size_t RootClass = 80;
constexpr std::uint16_t WordStream = 0xA5EC;

struct Kind
{
    std::string_view text;
    FileTypeId typeId;
};

// Class identifiers as they are stored: the first three fields little-endian.
constexpr Kind Classes[] = {
    {"\x06\x09\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"sv, FileTypeId::WordOle},
    {"\x20\x08\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"sv, FileTypeId::SheetOle},
    {"\x10\x08\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"sv, FileTypeId::SheetOle},
    {"\x10\x8D\x81\x64\x9B\x4F\xCF\x11\x86\xEA\0\xAA\0\xB9\x29\xE8"sv, FileTypeId::SlidesOle},
};

// A name that only begins so counts too. "Wordbook" is meant: a stream that is called "Workbook" decides nothing here.
constexpr Kind StreamNames[] = {
    {"WordDocument", FileTypeId::WordOle},
    {"Wordbook", FileTypeId::SheetOle},
    {"PowerPoint Document", FileTypeId::SlidesOle},
};

bool NameBegins(ByteView entry, std::string_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (entry.U16(2 * i) != static_cast<std::uint8_t>(text[i])) {
            return false;
        }
    }
    return true;
}

FileTypeId KindOfDirectory(ByteView directory)
{
    for (const Kind& kind : Classes) {
        if (directory.Matches(RootClass, kind.text)) {
            return kind.typeId;
        }
    }
    for (std::size_t at = 0; directory.Covers(at, EntryBytes); at += EntryBytes) {
        for (const Kind& kind : StreamNames) {
            if (NameBegins(directory.Sub(at, EntryBytes), kind.text)) {
                return kind.typeId;
            }
        }
    }
    return FileTypeId::OtherOle;
}

}  // namespace

FileTypeId DetectFla(const std::uint8_t* buffer, std::int32_t size)
{
    const bool hit =
        size >= SmallestFlaSize && ByteView(buffer, size).Matches(0, "\xD0\xCF\x11\xE0");
    return hit ? FileTypeId::Fla : FileTypeId::None;
}

FileTypeId DetectOle2(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestOleSize || !sector.Matches(0, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1")) {
        return FileTypeId::None;
    }
    return ClassifyOle2(sector);
}

FileTypeId ClassifyOle2(ByteView head)
{
    CarveContext& context = CarveContext::Instance();
    // Sectors are counted as 512-byte ones are: a file of larger sectors is misread, and may be recorded as another kind.
    const ByteView first = context.ReadSectors(context.currentLba + 1, 1);
    if (first.Empty()) {
        return FileTypeId::OtherOle;
    }
    if (first.U16(0) == WordStream) {
        return FileTypeId::WordOle;
    }
    if (first.Matches(0, "\x09\x08\x10\x00\x00\x06"sv)) {
        return FileTypeId::SheetOle;
    }
    if (!head.Covers(DirectorySectorField, 4)) {
        return FileTypeId::OtherOle;
    }
    const std::uint64_t directoryLba = context.currentLba + 1 + head.U32(DirectorySectorField);
    return KindOfDirectory(context.ReadSectors(directoryLba, 1));
}
