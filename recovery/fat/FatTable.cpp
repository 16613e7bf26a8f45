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
    m_source = &fatSource;
    m_startLba = fatStartLba;
    m_sectorSize = static_cast<std::uint32_t>(geometry.sectorSize);
    m_isFat32 = geometry.isFat32;
    m_windowStart = 0;
    m_isFirstWindow = true;
    m_readsFailed = false;
    m_firstWindow.clear();
    m_pages.assign(CachedPages, Page());
    const std::uint64_t sectors = WindowBytes / m_sectorSize;
    if (m_startLba > m_source->totalSectors || sectors > m_source->totalSectors - m_startLba) {
        return;  // nothing comes, and an empty window reads as zeros
    }
    m_firstWindow.assign(WindowBytes, 0);
    std::int32_t sectorsRead = 0;
    const ResultCode result = m_source->ReadSectors(
        m_firstWindow.data(), static_cast<std::int32_t>(WindowBytes / m_sectorSize), m_startLba,
        geometry.sectorSize, &sectorsRead);
    m_readsFailed = result != ResultSuccess;  // what did not come stays zero
}

bool FatTable::InWindow(std::uint32_t offset) const
{
    return offset >= m_windowStart && offset - m_windowStart < WindowBytes;
}

bool FatTable::IsEndMark(std::uint32_t entry) const
{
    return m_isFat32 ? (entry & Low28Bits) >= EndMark28 : (entry & 0xFFFF) >= EndMark16;
}

// The window moves as a whole or not at all, so it has to lie in the source as a whole. Its bytes are read when they
// are asked for.
ResultCode FatTable::MoveWindow(std::uint32_t offset)
{
    const std::uint64_t firstSector = offset / m_sectorSize;
    const std::uint64_t sectors = WindowBytes / m_sectorSize;
    const std::uint64_t lba = m_startLba + firstSector;
    if (lba > m_source->totalSectors || sectors > m_source->totalSectors - lba) {
        return ResultInvalidParameter;
    }
    // Sectors are compared as the volume counts them; those of an image may be smaller.
    if ((lba + sectors) > m_source->totalBytes / m_sectorSize) {
        return ResultReadFault;
    }
    const std::uint64_t oldStart = m_windowStart;
    const bool wasFirst = m_isFirstWindow;
    m_windowStart = firstSector * m_sectorSize;
    m_isFirstWindow = false;
    const Page* page = nullptr;
    const ResultCode result = LoadPage(offset, &page);
    if (result != ResultSuccess) {
        m_windowStart = oldStart;
        m_isFirstWindow = wasFirst;
    }
    return result;
}

ResultCode FatTable::LoadPage(std::uint32_t offset, const Page** outPage)
{
    // A whole number of sectors, so that a page begins at one.
    const std::uint32_t pageSectors = std::max(1u, PageBytes / m_sectorSize);
    const std::uint64_t pageBytes = std::uint64_t{pageSectors} * m_sectorSize;
    const std::uint64_t number = offset / pageBytes;
    Page& page = m_pages[number % m_pages.size()];
    *outPage = &page;
    if (page.position == number * pageBytes) {
        return ResultSuccess;
    }
    const std::uint64_t lba = m_startLba + number * pageSectors;
    const std::uint64_t present =
        std::min<std::uint64_t>(m_source->totalSectors - lba, pageSectors);
    page.position = UINT64_MAX;
    page.bytes.assign(present * m_sectorSize, 0);
    std::int32_t sectorsRead = 0;
    const ResultCode result =
        m_source->ReadSectors(page.bytes.data(), static_cast<std::int32_t>(present), lba,
                              static_cast<std::int32_t>(m_sectorSize), &sectorsRead);
    m_readsFailed = m_readsFailed || result != ResultSuccess;
    const std::uint64_t wanted = (offset - number * pageBytes) / m_sectorSize;
    if (wanted >= static_cast<std::uint64_t>(sectorsRead)) {
        return result != ResultSuccess ? result : ResultReadFault;
    }
    page.bytes.resize(static_cast<std::size_t>(sectorsRead) * m_sectorSize);
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
    if (m_isFirstWindow) {
        *outBytes = ByteView(m_firstWindow).Sub(offset);
        return ResultSuccess;
    }
    // Sectors that do not fit the window whole are not read into it.
    const std::uint64_t readable =
        m_windowStart + std::uint64_t{WindowBytes / m_sectorSize} * m_sectorSize;
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
    if (m_isFat32) {
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
    return m_isFat32 ? entry : entry & 0xFFFF;
}

ResultCode FatTable::ForEachUsedEntry(
    std::uint64_t first,
    std::uint64_t limit,
    const WorkReport& report,
    const std::function<bool(std::uint32_t cluster, std::uint32_t entry)>& visit)
{
    const std::uint64_t round = EntriesInRound();
    const std::uint32_t step = EntryBytes();
    for (std::uint64_t cluster = first; cluster < limit;) {
        if (const ResultCode answer = report()) {
            return answer;
        }
        const std::uint32_t offset = OffsetOf(static_cast<std::uint32_t>(cluster));
        ByteView bytes;
        const ResultCode result = BytesAt(offset, &bytes);
        if (result == ResultInvalidParameter) {
            // Past the source's end; so is all that follows, up to where the offsets come round.
            cluster = (cluster / round + 1) * round;
            continue;
        }
        std::uint64_t served = (m_sectorSize - offset % m_sectorSize) / step;
        if (m_isFirstWindow && m_firstWindow.empty() && InWindow(offset)) {
            served = (WindowBytes - offset) / step;  // zeros to the window's end
        } else if (result == ResultSuccess && !bytes.Empty()) {
            served = bytes.Size() / step;
        }
        const std::uint64_t count = std::min({served, limit - cluster, round - cluster % round});
        const std::uint64_t present =
            result == ResultSuccess ? std::min<std::uint64_t>(bytes.Size() / step, count) : 0;
        for (std::uint64_t i = 0; i < present; ++i) {
            const std::uint32_t entry = EntryIn(bytes, i * step);
            if (entry != 0 && !visit(static_cast<std::uint32_t>(cluster + i), entry)) {
                return ResultSuccess;
            }
        }
        cluster += count;
    }
    return ResultSuccess;
}
