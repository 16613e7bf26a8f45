#include "storage/DiskPieces.h"

#include <algorithm>
#include <utility>

namespace {

class Cutting
{
public:
    Cutting(std::uint64_t diskSectors, std::uint32_t sectorSize)
        : m_diskSectors(diskSectors), m_sectorSize(sectorSize), m_overlapLeft(diskSectors)
    {
    }

    void Take(VolumeRecord volume);
    std::vector<VolumeRecord> Finish();

private:
    bool IsLargeEnough(std::uint64_t sectors) const
    {
        return sectors >= SmallestPieceBytes / m_sectorSize && sectors != 0;
    }
    bool MayOverlap(const VolumeRecord& volume, std::uint64_t end);
    void AddGap(std::uint64_t end);

    std::uint64_t m_diskSectors;
    std::uint32_t m_sectorSize;
    std::uint64_t m_overlapLeft;  // sectors that may still be in a second piece
    std::uint64_t m_covered = 0;  // sectors before it are in a piece
    std::uint64_t m_lastStart = UINT64_MAX;
    std::vector<VolumeRecord> m_pieces;
};

void Cutting::Take(VolumeRecord volume)
{
    volume.StartSector /= m_sectorSize;
    volume.SectorCount /= m_sectorSize;
    if (volume.StartSector >= m_diskSectors || volume.StartSector == m_lastStart) {
        return;
    }
    volume.SectorCount = std::min(volume.SectorCount, m_diskSectors - volume.StartSector);
    const std::uint64_t end = volume.StartSector + volume.SectorCount;
    if (!IsLargeEnough(volume.SectorCount) || !MayOverlap(volume, end)) {
        return;  // what of it is in no piece yet becomes a gap
    }
    AddGap(volume.StartSector);
    m_lastStart = volume.StartSector;
    m_covered = std::max(m_covered, end);
    m_pieces.push_back(std::move(volume));
}

bool Cutting::MayOverlap(const VolumeRecord& volume, std::uint64_t end)
{
    if (volume.StartSector >= m_covered) {
        return true;
    }
    const std::uint64_t twice = std::min(end, m_covered) - volume.StartSector;
    if (volume.FileSystemName.empty() || twice > m_overlapLeft) {
        return false;
    }
    m_overlapLeft -= twice;
    return true;
}

void Cutting::AddGap(std::uint64_t end)
{
    if (end > m_covered && IsLargeEnough(end - m_covered)) {
        VolumeRecord gap;
        gap.PartitionNumber = 0;
        gap.StartSector = m_covered;
        gap.SectorCount = end - m_covered;
        gap.TotalBytes = gap.SectorCount * m_sectorSize;
        gap.FreeBytes = gap.TotalBytes;
        m_pieces.push_back(std::move(gap));
    }
}

std::vector<VolumeRecord> Cutting::Finish()
{
    AddGap(m_diskSectors);
    char16_t number = 0;
    for (VolumeRecord& piece : m_pieces) {
        piece.Letter = ++number;
    }
    return std::move(m_pieces);
}

}  // namespace

std::vector<VolumeRecord>
PiecesOf(std::vector<VolumeRecord> volumes, std::uint64_t diskBytes, std::uint32_t sectorSize)
{
    // Of those that begin in the same place the largest comes first.
    std::stable_sort(volumes.begin(), volumes.end(),
                     [](const VolumeRecord& left, const VolumeRecord& right) {
                         return std::pair(left.StartSector, right.SectorCount) <
                                std::pair(right.StartSector, left.SectorCount);
                     });
    Cutting cutting(diskBytes / sectorSize, sectorSize);
    for (VolumeRecord& volume : volumes) {
        cutting.Take(std::move(volume));
    }
    return cutting.Finish();
}
