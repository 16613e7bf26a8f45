// Monkey's Audio: "MAC " in front, at the end an APEv2 tag: "APETAGEX" and the version 2000, as the tag's header and
// again as its footer of 32 bytes.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

constexpr std::int64_t Budget = 2'147'483'648;
constexpr std::string_view TagMark = "APETAGEX\xD0\x07";
constexpr std::size_t FooterBytes = 32;

}  // namespace

FileTypeId DetectApe(const std::uint8_t* buffer, std::int32_t size)
{
    return ByteView(buffer, size).Matches(0, "MAC ") ? FileTypeId::Ape : FileTypeId::None;
}

std::int64_t LengthApe(const std::uint8_t*, std::int32_t)
{
    static MarkFinder headers(TagMark);
    static MarkFinder footers(TagMark);
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        const std::size_t header = headers.Find(scan.Searched());
        if (header == NotFound) {
            continue;
        }
        const std::size_t footer = footers.Find(scan.Searched(), header + TagMark.size());
        // A tag whose footer lies beyond takes the whole block.
        const std::size_t end = footer != NotFound ? footer + FooterBytes : scan.Block().Size();
        scan.StopAt(scan.Scanned() + static_cast<std::int64_t>(end));
    }
    return scan.Length();
}
