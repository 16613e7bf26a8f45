// Reads a file's clusters out of a FAT volume one after the other. Blind to whether they have since been given to another
// file.
#pragma once

#include "recovery/RecordCopy.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>

// The cluster to read after one.
using NextClusterFunction = std::function<std::uint32_t(std::uint32_t cluster)>;

// Above this the cluster size of a record is nonsense; reading gives ResultWriteFault (29).
inline constexpr std::int32_t LargestClusterBytes = 0x6400000;

// A piece is a cluster, whole: of one that cannot be read whole nothing is brought. It never comes to an end by itself.
class ClusterReader : public IRecordReader
{
public:
    // The source outlives it.
    ClusterReader(SectorSource& source,
                  std::int32_t sectorSize,
                  const FileRecord& record,
                  NextClusterFunction nextCluster);

    CopyManners Manners() const override;
    ResultCode Begin(std::uint64_t wanted, std::size_t* outBufferBytes) override;
    ResultCode
    Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool* outIsWhole) override;
    bool FindPlaces(std::uint64_t wanted, BytePlaces& outPlaces) override;

private:
    std::uint64_t SectorOfPiece() const;

    SectorSource& m_source;
    std::int32_t m_sectorSize;
    std::int32_t m_clusterBytes;
    std::int32_t m_sectorsPerCluster = 0;
    std::uint32_t m_cluster;
    std::uint64_t m_dataSector;  // where cluster 2 begins
    NextClusterFunction m_nextCluster;
};
