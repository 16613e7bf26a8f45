// Icons: 00 00 01 00, the count of images at 4, a directory entry of 16 bytes for each (size at 8, offset at 12), and the
// images back to back after the directory.
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 16;
constexpr std::size_t DirectoryStart = 6;
constexpr std::size_t EntryBytes = 16;
constexpr std::int32_t DirectoryReadBytes = 65536;

std::size_t DirectoryEnd(ByteView head)
{
    return head.U16(4) * EntryBytes + DirectoryStart;
}

}  // namespace

FileTypeId DetectIco(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize || !sector.Matches(0, "\0\0\1\0"sv) || sector.U16(4) == 0) {
        return FileTypeId::None;
    }
    const std::size_t end = DirectoryEnd(sector);
    if (end > sector.Size()) {
        return FileTypeId::None;
    }
    // The sums wrap in 32 bits.
    auto expected = static_cast<std::uint32_t>(end);
    for (std::size_t entry = DirectoryStart; entry < end; entry += EntryBytes) {
        const std::uint32_t offset = sector.U32(entry + 12);
        if (sector.U8(entry + 3) != 0 || offset != expected) {
            return FileTypeId::None;
        }
        expected = offset + sector.U32(entry + 8);
    }
    return FileTypeId::Ico;
}

std::int64_t LengthIco(const std::uint8_t* buffer, std::int32_t size)
{
    CarveContext& context = CarveContext::Instance();
    ByteView head(buffer, size);
    const std::size_t end = DirectoryEnd(head);
    if (end > head.Size()) {
        const std::int32_t sectors =
            context.sectorSize > 0 ? DirectoryReadBytes / context.sectorSize : 0;
        head = context.ReadSectors(context.startLba, sectors);
    }
    if (end > head.Size() || end < DirectoryStart + EntryBytes) {
        return context.sectorSize;
    }
    const std::size_t last = end - EntryBytes;
    return head.U32(last + 12) + head.U32(last + 8);
}
