// MPEG program and video streams: 00 00 01 and a code byte open every unit. BA pack, BB system header, B3
// sequence, B8 group of pictures; B9 ends a program stream, B7 a video stream.
#include "recovery/carving/LengthScan.h"
#include "recovery/carving/formats/Formats.h"

#include <string_view>

namespace {

using namespace std::string_view_literals;

constexpr std::int32_t SmallestSize = 16;
constexpr std::size_t HeadBytes = 32;
constexpr std::int64_t Budget = 4'294'967'296;
constexpr std::string_view SequenceStart = "\0\0\1\xB3"sv;
constexpr std::string_view SequenceEnd = "\0\0\1\xB7"sv;
constexpr std::string_view ProgramEnd = "\0\0\1\xB9"sv;

bool Holds(ByteView head, std::string_view mark)
{
    return FindBytes(head, mark) != NotFound;
}

}  // namespace

FileTypeId DetectMpeg(const std::uint8_t* buffer, std::int32_t size)
{
    if (size < SmallestSize) {
        return FileTypeId::None;
    }
    // Anywhere in the head and in any order: the first unit need not be at offset 0.
    const ByteView head = ByteView(buffer, size).Sub(0, HeadBytes);
    const bool program = Holds(head, "\0\0\1\xBA"sv) && Holds(head, "\0\0\1\xBB"sv);
    const bool video = Holds(head, SequenceStart) && Holds(head, "\0\0\1\xB8"sv);
    return program || video ? FileTypeId::Mpeg : FileTypeId::None;
}

std::int64_t LengthMpeg(const std::uint8_t* buffer, std::int32_t size)
{
    static MarkFinder sequenceEnds(SequenceEnd, MarkFinder::Accept::ClosingFile);
    static MarkFinder programEnds(ProgramEnd, MarkFinder::Accept::ClosingFile);
    const bool video = ByteView(buffer, size).Matches(0, SequenceStart);
    MarkFinder& ends = video ? sequenceEnds : programEnds;
    LengthScan scan(Budget, ScanBlockForBoundaryMpeg);
    while (scan.NextBlock()) {
        const std::size_t at = ends.Find(scan.Searched());
        if (at != NotFound) {
            scan.StopAt(scan.Scanned() + static_cast<std::int64_t>(at + ProgramEnd.size()));
        }
    }
    return scan.Length();
}
