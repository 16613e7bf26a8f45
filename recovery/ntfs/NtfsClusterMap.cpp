#include "recovery/ntfs/NtfsClusterMap.h"

#include "recovery/ntfs/NtfsRunBytes.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr std::uint64_t WordBits = 64;
constexpr std::uint64_t WordBytes = 8;
// The format counts clusters in 32 bits.
constexpr std::uint64_t LargestBitmap = std::uint64_t{1} << 29;

}  // namespace

ResultCode NtfsClusterMap::Build(NtfsReaders& readers,
                                 const NtfsVolume& volume,
                                 SectorSource& source,
                                 const WorkReport& report)
{
    const std::uint64_t record = readers.RecordNumberToSector(BitmapRecordNumber);
    RunList runs;
    if (const ResultCode result = readers.ReadAttributeRuns(record, AttributeData, runs)) {
        return result;
    }
    std::uint64_t realSize = 0;
    if (const ResultCode result = readers.ReadDataRealSize(record, realSize)) {
        return result;
    }
    std::uint64_t sectors = 0;
    for (const NtfsRun& run : runs) {
        sectors += run.Length * volume.SectorsPerCluster;
    }
    m_bitmap.clear();
    m_bitmapSize = 0;
    if (sectors > source.totalSectors * ImageSectorSize / volume.BytesPerSector) {
        return ResultOutOfMemory;
    }
    m_bitmapSize = std::min({realSize, sectors * volume.BytesPerSector, LargestBitmap});
    m_bitmap.assign((m_bitmapSize + WordBytes - 1) / WordBytes, 0);
    return Fill(runs, volume, source, report);
}

// The bytes that arrived of one run are followed by those of the next, without a gap.
ResultCode NtfsClusterMap::Fill(const RunList& runs,
                                const NtfsVolume& volume,
                                SectorSource& source,
                                const WorkReport& report)
{
    std::uint64_t filled = 0;
    std::uint64_t sector = volume.PartitionStart;
    for (const NtfsRun& run : runs) {
        sector += SectorsToRun(run, volume.SectorsPerCluster);
        NtfsRunBytes bytes(source, sector, run.Length * volume.SectorsPerCluster,
                           volume.BytesPerSector);
        while (filled < m_bitmapSize) {
            if (const ResultCode answer = report()) {
                return answer;
            }
            const ByteView piece = bytes.NextPiece();
            if (piece.Empty()) {
                break;
            }
            const std::uint64_t count =
                std::min<std::uint64_t>(piece.Size(), m_bitmapSize - filled);
            // Pieces are whole sectors and begin at a word.
            std::memcpy(m_bitmap.data() + filled / WordBytes, piece.Data(), count);
            filled += count;
        }
    }
    return ResultSuccess;
}

std::uint64_t NtfsClusterMap::FindBit(std::uint64_t from, bool set) const
{
    const std::uint64_t flip = set ? 0 : ~std::uint64_t{0};
    for (std::uint64_t word = from / WordBits; word < m_bitmap.size(); ++word) {
        std::uint64_t bits = m_bitmap[word] ^ flip;
        if (word == from / WordBits) {
            bits &= ~std::uint64_t{0} << from % WordBits;
        }
        if (bits != 0) {
            return std::min(word * WordBits + static_cast<std::uint64_t>(std::countr_zero(bits)),
                            Bits());
        }
    }
    return Bits();
}

void NtfsClusterMap::NextFreeRange(const NtfsVolume& volume,
                                   std::uint64_t& inOutSector,
                                   std::uint64_t& outLength) const
{
    outLength = 0;
    if (inOutSector > volume.SectorCount) {
        inOutSector = volume.SectorCount;
        return;
    }
    const std::uint64_t cluster = inOutSector / volume.SectorsPerCluster;
    if (cluster < Bits()) {
        const std::uint64_t free = FindBit(cluster, false);
        if (free < Bits()) {
            inOutSector += (free - cluster) * volume.SectorsPerCluster;
            outLength = (FindBit(free, true) - free) * volume.SectorsPerCluster;
        }
    }
    if (inOutSector > volume.SectorCount || outLength > volume.SectorCount - inOutSector) {
        outLength = inOutSector < volume.SectorCount ? volume.SectorCount - inOutSector : 0;
    }
}
