#include "recovery/UnreadFile.h"

#include "platform/ByteView.h"
#include "platform/FileHandle.h"
#include "platform/Folders.h"

#include <cstring>
#include <string_view>
#include <vector>

namespace {

using namespace std::string_view_literals;

constexpr const char* UnreadName = ".unread";
constexpr std::string_view Mark = "LVUNREAD"sv;
constexpr std::size_t RangeBytes = 16;  // first sector, count; little-endian
// A disk with more places than this is read anew as a whole.
constexpr std::size_t MostRanges = 65536;

}  // namespace

ResultCode WriteUnread(const std::filesystem::path& logFolder, const SectorRanges& ranges)
{
    const std::filesystem::path path = logFolder / UnreadName;
    if (ranges.Empty()) {
        return PathExists(path) ? RemoveFile(path) : ResultSuccess;
    }
    std::vector<std::uint8_t> bytes(Mark.begin(), Mark.end());
    for (const auto& [first, end] : ranges.Ends()) {
        const std::uint64_t range[] = {first, end - first};
        const std::size_t at = bytes.size();
        bytes.resize(at + RangeBytes);
        std::memcpy(bytes.data() + at, range, RangeBytes);
        if (bytes.size() > MostRanges * RangeBytes) {
            break;
        }
    }
    return WriteWholeFile(path, bytes.data(), bytes.size());
}

SectorRanges ReadUnread(const std::filesystem::path& logFolder)
{
    SectorRanges ranges;
    FileHandle file;
    std::vector<std::uint8_t> bytes(Mark.size() + (MostRanges + 1) * RangeBytes);
    std::size_t got = 0;
    if (file.OpenForReading(logFolder / UnreadName) != ResultSuccess || !file.IsRegularFile() ||
        file.ReadAt(0, bytes.data(), bytes.size(), &got) != ResultSuccess) {
        return ranges;
    }
    const ByteView view(bytes.data(), got);
    for (std::size_t at = Mark.size(); view.Matches(0, Mark) && view.Covers(at, RangeBytes);
         at += RangeBytes) {
        ranges.Add(view.U64(at), view.U64(at + sizeof(std::uint64_t)));
    }
    return ranges;
}
