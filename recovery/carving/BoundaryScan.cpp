#include "recovery/carving/BoundaryScan.h"

#include "recovery/carving/ByteSearch.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/DetectDispatch.h"
#include "recovery/metadata/SectorValidators.h"

#include <string_view>

namespace {

using namespace std::string_view_literals;

constexpr std::uint32_t RecordMark = 0x454C4946;   // "FILE"
constexpr std::uint32_t RestartMark = 0x52545352;  // "RSTR"
constexpr std::uint32_t IndexMark = 0x58444E49;    // "INDX"
constexpr std::string_view AttributeTable = "\x24\0S\0T\0A\0"sv;
constexpr std::string_view NtfsName = "N\0T\0F\0S\0"sv;

bool Scan(ByteView block, std::int64_t& inOutLength, FileTypeId passedOver)
{
    CarveContext& context = CarveContext::Instance();
    const auto sectorSize = static_cast<std::size_t>(context.sectorSize);
    for (std::size_t offset = 0; block.Covers(offset, sectorSize); offset += sectorSize) {
        ++context.currentLba;
        const ByteView sector = block.Sub(offset, sectorSize);
        const FileTypeId head = DetectAny(sector.Data(), context.sectorSize);
        const bool isHead = head != FileTypeId::None && head != passedOver;
        if (isHead || IsFileSystemMetadataSector(sector)) {
            inOutLength += static_cast<std::int64_t>(offset);
            return true;
        }
        if (head == FileTypeId::None) {
            context.freeStretch.Add(context.currentLba, IsFatDotEntries(sector));
        }
    }
    return false;
}

}  // namespace

bool IsFileSystemMetadataSector(ByteView sector)
{
    if (sector.Size() < DirEntryBytes) {
        return false;
    }
    switch (sector.U32(0)) {
    case RecordMark:
    case IndexMark:
        return true;
    case RestartMark:
        if (FindBytes(sector, NtfsName) != NotFound) {
            return true;
        }
        break;
    default:
        break;
    }
    return sector.Matches(0, AttributeTable) || IsFatDirectorySector(sector);
}

bool ScanBlockForBoundary(ByteView block, std::int64_t& inOutLength)
{
    return Scan(block, inOutLength, FileTypeId::None);
}

bool ScanBlockForBoundaryMpeg(ByteView block, std::int64_t& inOutLength)
{
    return Scan(block, inOutLength, FileTypeId::Mpeg);
}
