// Copies a file's clusters out of a FAT volume, to a file being restored or into a preview. Blind to whether the
// clusters have since been given to another file.
#pragma once

#include "recovery/RestoreSupport.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>

// The cluster to read after one.
using NextClusterFunction = std::function<std::uint32_t(std::uint32_t cluster)>;

// How an engine reaches a record's clusters.
struct ClusterReader
{
    SectorSource& source;
    std::int32_t sectorSize;
    NextClusterFunction nextCluster;
};

// Above this the cluster size of a record is nonsense; copying gives ResultWriteFault (29).
inline constexpr std::int32_t LargestClusterBytes = 0x6400000;

// Writes record to path, FileSize bytes. Reports each cluster to fileCallback, whose result replaces the error so far;
// an error that ends the copy is reported too, a cancel is not. What was written stays.
[[nodiscard]] ResultCode RestoreClusters(const ClusterReader& reader,
                                         const FileRecord& record,
                                         const std::filesystem::path& path,
                                         FileProgressCallback fileCallback,
                                         void* context);

// Where the data of a preview goes, and who is told.
struct PreviewRequest
{
    std::filesystem::path& tempPath;
    std::uint8_t* buffer;
    std::uint32_t& inOutSize;
    PreviewProgressCallback progressFn;
    void* context;
};

// A picture, sound or clip to its temporary file, anything else into the buffer. The file is removed after an error.
[[nodiscard]] ResultCode PreviewClusters(const ClusterReader& reader,
                                         const FileRecord& record,
                                         const PreviewRequest& request);
