// Entries of the first FAT, read through a window of 16 MiB that moves, and the cluster that follows a cluster.
#pragma once

#include "recovery/WorkReport.h"
#include "recovery/metadata/FatGeometry.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <vector>

// Owned by one engine, which owns the source too. Not thread-safe.
class FatTable
{
public:
    static constexpr std::uint32_t WindowBytes = 0x1000000;

    // Starts at the FAT's first sector. A first window that cannot be read whole keeps what came and zeros after
    // it; where less than a whole window lies before the source's end, nothing comes, and every entry is 0.
    void Open(SectorSource& fatSource, const FatGeometry& geometry, std::uint64_t fatStartLba);

    // The raw entry: 32 bits on FAT32 with its high 4 bits, else 16 bits sign-extended; FAT12 is read as 16 bits too.
    // A window that has to move and cannot gives an error and leaves *outEntry and the window as they were.
    [[nodiscard]] ResultCode ReadFatEntry(std::uint32_t cluster, std::uint32_t* outEntry);

    // The cluster to read after this one, 0 for none. A freed cluster is taken to run on into the next one as long
    // as that is free too.
    std::uint32_t NextCluster(std::uint32_t cluster);

    bool IsEndMark(std::uint32_t entry) const;
    std::uint32_t EntryBytes() const { return m_isFat32 ? 4 : 2; }
    std::uint64_t EntriesInRound() const { return (std::uint64_t{1} << 32) / EntryBytes(); }
    // A read has failed since the opening, so the same entry may come out differently when it is read again.
    bool ReadsFailed() const { return m_readsFailed; }

    // Calls visit(cluster, entry) for the non-zero entries of clusters from first to below limit that can be read,
    // in order, until it returns false. Same entries as ReadFatEntry gives one by one, but in time of what is there.
    // 0, or what report answered. Offsets have 32 bits, so the clusters from EntriesInRound() on are the table's first
    // ones again.
    ResultCode
    ForEachUsedEntry(std::uint64_t first,
                     std::uint64_t limit,
                     const WorkReport& report,
                     const std::function<bool(std::uint32_t cluster, std::uint32_t entry)>& visit);

private:
    static constexpr std::uint32_t PageBytes = 65536;

    struct Page
    {
        std::uint64_t position = UINT64_MAX;  // bytes from the FAT's start
        std::vector<std::uint8_t> bytes;
    };

    std::uint32_t OffsetOf(std::uint32_t cluster) const { return cluster * EntryBytes(); }
    bool InWindow(std::uint32_t offset) const;
    [[nodiscard]] ResultCode MoveWindow(std::uint32_t offset);
    [[nodiscard]] ResultCode LoadPage(std::uint32_t offset, const Page** outPage);
    // The bytes that hold the entry at offset, up to the end of what is in memory.
    [[nodiscard]] ResultCode BytesAt(std::uint32_t offset, ByteView* outBytes);
    std::uint32_t EntryIn(ByteView bytes, std::size_t offset) const;

    SectorSource* m_source = nullptr;
    std::uint64_t m_startLba = 0;
    std::uint32_t m_sectorSize = 512;
    bool m_isFat32 = true;
    std::uint64_t m_windowStart = 0;  // bytes from the FAT's start
    bool m_isFirstWindow = true;      // firstWindow holds it; later ones are read page by page
    std::vector<std::uint8_t> m_firstWindow;  // empty: every entry of it is 0
    bool m_readsFailed = false;
    std::vector<Page> m_pages;
};
