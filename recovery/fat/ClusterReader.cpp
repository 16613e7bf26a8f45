#include "recovery/fat/ClusterReader.h"

#include "recovery/CopyScope.h"
#include "recovery/metadata/FatClusters.h"

#include <utility>

ClusterReader::ClusterReader(SectorSource& source,
                             std::int32_t sectorSize,
                             const FileRecord& record,
                             NextClusterFunction nextCluster)
    : m_source(source),
      m_sectorSize(sectorSize),
      m_clusterBytes(static_cast<std::int32_t>(record.ClusterBytes)),
      m_cluster(record.NodeId),
      m_dataSector(record.PartitionStart + record.DataStart),
      m_nextCluster(std::move(nextCluster))
{
}

CopyManners ClusterReader::Manners() const
{
    CopyManners manners;
    manners.tellsEmptyFile = true;
    manners.answerReplacesWriteError = true;
    return manners;
}

ResultCode ClusterReader::Begin(std::uint64_t /*wanted*/, std::size_t* outBufferBytes)
{
    if (m_clusterBytes > LargestClusterBytes) {
        return ResultWriteFault;
    }
    // A size of nothing, or less, brings a read fault with the first piece.
    m_sectorsPerCluster = m_clusterBytes > 0 ? m_clusterBytes / m_sectorSize : 0;
    *outBufferBytes =
        static_cast<std::size_t>(m_sectorsPerCluster) * static_cast<std::size_t>(m_sectorSize);
    return ResultSuccess;
}

std::uint64_t ClusterReader::SectorOfPiece() const
{
    return SectorOfFatCluster({m_dataSector, 0, static_cast<std::uint32_t>(m_sectorsPerCluster)},
                              m_cluster);
}

bool ClusterReader::FindPlaces(std::uint64_t wanted, BytePlaces& outPlaces)
{
    std::size_t pieceBytes = 0;
    if (Begin(wanted, &pieceBytes) != ResultSuccess || pieceBytes == 0) {
        return false;
    }
    for (std::uint64_t found = 0; found < wanted; found += pieceBytes) {
        if (!AddPlace(outPlaces, SectorOfPiece(), static_cast<std::uint64_t>(m_sectorsPerCluster),
                      static_cast<std::uint32_t>(m_sectorSize))) {
            return false;
        }
        if (wanted - found > pieceBytes) {
            m_cluster = m_nextCluster(m_cluster);
        }
    }
    return true;
}

ResultCode
ClusterReader::Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool* /*outIsWhole*/)
{
    std::int32_t sectorsRead = 0;
    const ResultCode result = ReadForCopy(m_source, buffer.data(), m_sectorsPerCluster,
                                          SectorOfPiece(), m_sectorSize, &sectorsRead);
    if (sectorsRead == 0 || result != ResultSuccess) {
        return sectorsRead == 0 ? ResultReadFault : result;
    }
    m_cluster = m_nextCluster(m_cluster);
    *outBytes = buffer.size();
    return ResultSuccess;
}
