// gif and png, which are measured alike: to the first end mark that closes its sector, or is followed by zeros in it.
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 8;
constexpr std::int64_t Budget = 134'217'728;
constexpr std::string_view GifEnd = "\0\x3B"sv;
constexpr std::string_view PngEnd = "IEND\xAE\x42\x60\x82";
constexpr std::string_view PngHead = "\x89PNG\r\n\x1A\n";

bool IsDigit(std::uint8_t letter)
{
    return letter >= '0' && letter <= '9';
}

std::int64_t LengthToMark(ByteView head, MarkFinder& ends, std::size_t markBytes)
{
    const SearchBlock headBlock = {head, 0, 0, CarveContext::Instance().sectorSize};
    const std::size_t inHead = ends.Find(headBlock);
    if (inHead != NotFound) {
        return static_cast<std::int64_t>(inHead + markBytes);
    }
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        const std::size_t at = ends.Find(scan.Searched());
        if (at != NotFound) {
            // Also when it lies past a boundary of this block.
            scan.StopAt(scan.Scanned() + static_cast<std::int64_t>(at + markBytes));
        }
    }
    return scan.Length();
}

}  // namespace

FileTypeId DetectGif(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize || !sector.Matches(0, "GIF")) {
        return FileTypeId::None;
    }
    const std::uint8_t letter = sector.U8(5);
    const bool version =
        IsDigit(sector.U8(3)) && IsDigit(sector.U8(4)) && letter >= 'a' && letter <= 'z';
    return version ? FileTypeId::Gif : FileTypeId::None;
}

std::int64_t LengthGif(const std::uint8_t* buffer, std::int32_t size)
{
    static MarkFinder ends(GifEnd, MarkFinder::Accept::ClosingFile);
    return LengthToMark(ByteView(buffer, size), ends, GifEnd.size());
}

FileTypeId DetectPng(const std::uint8_t* buffer, std::int32_t size)
{
    return ByteView(buffer, size).Matches(0, PngHead) ? FileTypeId::Png : FileTypeId::None;
}

std::int64_t LengthPng(const std::uint8_t* buffer, std::int32_t size)
{
    static MarkFinder ends(PngEnd, MarkFinder::Accept::ClosingFile);
    return LengthToMark(ByteView(buffer, size), ends, PngEnd.size());
}
