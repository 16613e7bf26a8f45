// jpeg files that open with a JFIF or Exif segment: FF D8 FF E0 (or E1), the segment's length, its name. FF D9 ends the
// picture, and also each thumbnail in it.
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

constexpr std::int32_t SmallestSize = 16;
constexpr std::int64_t Budget = 134'217'728;
constexpr std::string_view EndMark = "\xFF\xD9";

}  // namespace

FileTypeId DetectJpeg(const std::uint8_t* buffer, std::int32_t size)
{
    const ByteView sector(buffer, size);
    if (size < SmallestSize) {
        return FileTypeId::None;
    }
    const bool jfif = sector.Matches(0, "\xFF\xD8\xFF\xE0") && sector.Matches(6, "JFIF");
    const bool exif = sector.Matches(0, "\xFF\xD8\xFF\xE1") && sector.Matches(6, "Exif");
    return jfif || exif ? FileTypeId::Jpeg : FileTypeId::None;
}

std::int64_t LengthJpeg(const std::uint8_t* buffer, std::int32_t size)
{
    static MarkFinder marks(EndMark);
    const std::int32_t sectorSize = CarveContext::Instance().sectorSize;
    const ByteView head(buffer, size);
    const std::size_t inHead = FindBytes(head, EndMark);
    if (inHead != NotFound && EndsFile(head, inHead + EndMark.size(), sectorSize)) {
        return static_cast<std::int64_t>(inHead + EndMark.size());
    }
    std::int64_t lastEnd = 0;
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        // One look a block: when its first mark does not close the file, no second one is tried. An accepted mark
        // does not end the scan, a later one overrides it.
        const std::size_t at = marks.Find(scan.Searched());
        if (at != NotFound && EndsFile(scan.Searched().bytes, at + EndMark.size(), sectorSize)) {
            lastEnd = scan.Scanned() + static_cast<std::int64_t>(at + EndMark.size());
        }
    }
    return lastEnd != 0 && lastEnd < scan.Length() ? lastEnd : scan.Length();
}
