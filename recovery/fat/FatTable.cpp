#include "recovery/fat/FatTable.h"

#include <algorithm>

namespace {

constexpr std::size_t CachedPages = 64;  // 4 MiB
constexpr std::uint32_t EndMark16 = 65528;
constexpr std::uint32_t EndMark28 = 0xFFFFFF8;
constexpr std::uint32_t Low28Bits = 0x0FFFFFFF;

}  // namespace

void FatTable::Open(SectorSource& fatSource, const FatGeometry& geometry, std::uint64_t fatStartLba)
{
    source = &fatSource;
    startLba = fatStartLba;
    sectorSize = static_cast<std::uint32_t>(geometry.sectorSize);
    isFat32 = geometry.isFat32;
    windowStart = 0;
    isFirstWindow = true;
    firstWindow.clear();
    pages.assign(CachedPages, Page());
    const std::uint64_t sectors = WindowBytes / sectorSize;
    if (startLba > source->totalSectors || sectors > source->totalSectors - startLba) {
        return;  // nothing comes, and an empty window reads as zeros
    }
    firstWindow.assign(WindowBytes, 0);
    std::int32_t sectorsRead = 0;
    (void)source->ReadSectors(firstWindow.data(),
                              static_cast<std::int32_t>(WindowBytes / sectorSize), startLba,
                              geometry.sectorSize,
                              &sectorsRead);  // what did not come stays zero
}

bool FatTable::InWindow(std::uint32_t offset) const
{
    return offset >= windowStart && offset - windowStart < WindowBytes;
}

bool FatTable::IsEndMark(std::uint32_t entry) const
{
    return isFat32 ? (entry & Low28Bits) >= EndMark28 : (entry & 0xFFFF) >= EndMark16;
}

// The window moves as a whole or not at all, so it has to lie in the source as a whole. Its bytes are read when they
// are asked for.
ResultCode FatTable::MoveWindow(std::uint32_t offset)
{
    const std::uint64_t firstSector = offset / sectorSize;
    const std::uint64_t sectors = WindowBytes / sectorSize;
    const std::uint64_t lba = startLba + firstSector;
    if (lba > source->totalSectors || sectors > source->totalSectors - lba) {
        return ResultInvalidParameter;
    }
    // Sectors are compared as the volume counts them; those of an image may be smaller.
    if ((lba + sectors) > source->totalBytes / sectorSize) {
        return ResultReadFault;
    }
    const std::uint64_t oldStart = windowStart;
    const bool wasFirst = isFirstWindow;
    windowStart = firstSector * sectorSize;
    isFirstWindow = false;
    const Page* page = nullptr;
    const ResultCode result = LoadPage(offset, &page);
    if (result != ResultSuccess) {
        windowStart = oldStart;
        isFirstWindow = wasFirst;
    }
    return result;
}

ResultCode FatTable::LoadPage(std::uint32_t offset, const Page** outPage)
{
    // A whole number of sectors, so that a page begins at one.
    const std::uint32_t pageSectors = std::max(1u, PageBytes / sectorSize);
    const std::uint64_t pageBytes = std::uint64_t{pageSectors} * sectorSize;
    const std::uint64_t number = offset / pageBytes;
    Page& page = pages[number % pages.size()];
    *outPage = &page;
    if (page.position == number * pageBytes) {
        return ResultSuccess;
    }
    const std::uint64_t lba = startLba + number * pageSectors;
    const std::uint64_t present = std::min<std::uint64_t>(source->totalSectors - lba, pageSectors);
    page.position = UINT64_MAX;
    page.bytes.assign(present * sectorSize, 0);
    std::int32_t sectorsRead = 0;
    const ResultCode result =
        source->ReadSectors(page.bytes.data(), static_cast<std::int32_t>(present), lba,
                            static_cast<std::int32_t>(sectorSize), &sectorsRead);
    const std::uint64_t wanted = (offset - number * pageBytes) / sectorSize;
    if (wanted >= static_cast<std::uint64_t>(sectorsRead)) {
        return result != ResultSuccess ? result : ResultReadFault;
    }
    page.bytes.resize(static_cast<std::size_t>(sectorsRead) * sectorSize);
    page.position = number * pageBytes;
    return ResultSuccess;
}

ResultCode FatTable::BytesAt(std::uint32_t offset, ByteView* outBytes)
{
    if (!InWindow(offset)) {
        if (const ResultCode result = MoveWindow(offset)) {
            return result;
        }
    }
    if (isFirstWindow) {
        *outBytes = ByteView(firstWindow).Sub(offset);
        return ResultSuccess;
    }
    // Sectors that do not fit the window whole are not read into it.
    const std::uint64_t readable =
        windowStart + std::uint64_t{WindowBytes / sectorSize} * sectorSize;
    if (offset >= readable) {
        *outBytes = {};
        return ResultSuccess;
    }
    const Page* page = nullptr;
    if (const ResultCode result = LoadPage(offset, &page)) {
        return result;
    }
    *outBytes = ByteView(page->bytes).Sub(offset - page->position, readable - offset);
    return outBytes->Empty() ? ResultReadFault : ResultSuccess;
}

std::uint32_t FatTable::EntryIn(ByteView bytes, std::size_t offset) const
{
    if (isFat32) {
        return bytes.U32(offset);
    }
    return static_cast<std::uint32_t>(std::int32_t{static_cast<std::int16_t>(bytes.U16(offset))});
}

ResultCode FatTable::ReadFatEntry(std::uint32_t cluster, std::uint32_t* outEntry)
{
    ByteView bytes;
    const ResultCode result = BytesAt(OffsetOf(cluster), &bytes);
    if (result == ResultSuccess) {
        *outEntry = EntryIn(bytes, 0);
    }
    return result;
}

std::uint32_t FatTable::NextCluster(std::uint32_t cluster)
{
    std::uint32_t entry = 0;
    if (ReadFatEntry(cluster, &entry) != ResultSuccess) {
        return 0;
    }
    if (entry == 0) {
        std::uint32_t following = 0;
        const bool isFree =
            ReadFatEntry(cluster + 1, &following) == ResultSuccess && following == 0;
        return isFree ? cluster + 1 : 0;
    }
    if (IsEndMark(entry)) {
        return 0;
    }
    return isFat32 ? entry : entry & 0xFFFF;
}

void FatTable::ForEachUsedEntry(
    std::uint64_t first,
    std::uint64_t limit,
    const std::function<bool(std::uint32_t cluster, std::uint32_t entry)>& visit)
{
    // Offsets are 32-bit, so that clusters behind this many come round to the table's start.
    const std::uint64_t round = (std::uint64_t{1} << 32) / EntryBytes();
    const std::uint32_t step = EntryBytes();
    for (std::uint64_t cluster = first; cluster < limit;) {
        const std::uint32_t offset = OffsetOf(static_cast<std::uint32_t>(cluster));
        ByteView bytes;
        const ResultCode result = BytesAt(offset, &bytes);
        if (result == ResultInvalidParameter) {
            // Past the source's end; so is all that follows, up to where the offsets come round.
            cluster = (cluster / round + 1) * round;
            continue;
        }
        const std::uint64_t inSector = (sectorSize - offset % sectorSize) / step;
        const std::uint64_t served =
            result == ResultSuccess && !bytes.Empty() ? bytes.Size() / step : inSector;
        const std::uint64_t count = std::min({served, limit - cluster, round - cluster % round});
        for (std::uint64_t i = 0; result == ResultSuccess && i < count; ++i) {
            const std::uint32_t entry = EntryIn(bytes, i * step);
            if (entry != 0 && !visit(static_cast<std::uint32_t>(cluster + i), entry)) {
                return;
            }
        }
        cluster += count;
    }
}
