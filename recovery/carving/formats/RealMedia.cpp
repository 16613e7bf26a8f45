// RealMedia: chunks of a four-letter name and a big-endian size, ".RMF" first, "INDX" last.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

namespace {

using namespace std::string_view_literals;

constexpr std::int64_t Budget = 4'294'967'296;
// An empty index chunk of stream 2, which closes most files.
constexpr std::string_view LastIndex = "INDX\0\0\0\x14\0\0\0\0\0\0\0\2\0\0\0\0"sv;

}  // namespace

FileTypeId DetectRm(const std::uint8_t* buffer, std::int32_t size)
{
    return ByteView(buffer, size).Matches(0, ".RMF") ? FileTypeId::RealMedia : FileTypeId::None;
}

std::int64_t LengthRm(const std::uint8_t*, std::int32_t)
{
    static MarkFinder indexes(LastIndex);
    LengthScan scan(Budget);
    while (scan.NextBlock()) {
        const std::size_t at = indexes.Find(scan.Searched());
        if (at != NotFound) {
            scan.StopAt(scan.Scanned() + static_cast<std::int64_t>(at + LastIndex.size()));
        }
    }
    return scan.Length();
}
