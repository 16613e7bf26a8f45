#include "recovery/fat/ClusterCopy.h"

#include "platform/Folders.h"
#include "recovery/metadata/FatClusters.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

// Goes through a record's clusters one by one.
class ClusterWalk
{
public:
    ClusterWalk(const ClusterReader& clusterReader, const FileRecord& record)
        : m_reader(clusterReader),
          m_cluster(record.NodeId),
          m_dataSector(record.PartitionStart + record.DataStart)
    {
        const auto clusterBytes = static_cast<std::int32_t>(record.ClusterBytes);
        if (clusterBytes > LargestClusterBytes) {
            m_sizeError = ResultWriteFault;
        } else if (clusterBytes > 0) {
            m_sectorsPerCluster = clusterBytes / m_reader.sectorSize;
            m_bytes.resize(static_cast<std::size_t>(m_sectorsPerCluster) *
                           static_cast<std::size_t>(m_reader.sectorSize));
        }
    }

    // ResultWriteFault when the record's cluster size is out of bounds.
    ResultCode SizeError() const { return m_sizeError; }

    // Reads the current cluster whole, or gives an error.
    ResultCode Read()
    {
        const std::uint64_t lba = SectorOfFatCluster(
            {m_dataSector, 0, static_cast<std::uint32_t>(m_sectorsPerCluster)}, m_cluster);
        std::int32_t sectorsRead = 0;
        const ResultCode result = m_reader.source.ReadSectors(
            m_bytes.data(), m_sectorsPerCluster, lba, m_reader.sectorSize, &sectorsRead);
        return sectorsRead == 0 ? ResultReadFault : result;
    }

    const std::vector<std::uint8_t>& Bytes() const { return m_bytes; }
    void Advance() { m_cluster = m_reader.nextCluster(m_cluster); }

private:
    const ClusterReader& m_reader;
    std::uint32_t m_cluster;
    std::uint64_t m_dataSector;
    std::int32_t m_sectorsPerCluster = 0;
    std::vector<std::uint8_t> m_bytes;
    ResultCode m_sizeError = ResultSuccess;
};

std::int32_t Percent(std::uint64_t done, std::uint64_t total)
{
    return static_cast<std::int32_t>(done * 100 / total);
}

}  // namespace

ResultCode RestoreClusters(const ClusterReader& reader,
                           const FileRecord& record,
                           const std::filesystem::path& path,
                           FileProgressCallback fileCallback,
                           void* context)
{
    OutputFile output;
    if (const ResultCode opened = output.Open(path)) {
        return opened;
    }
    ClusterWalk walk(reader, record);
    ResultCode result = walk.SizeError();
    const std::uint64_t total = record.FileSize;
    if (total == 0 && result == ResultSuccess) {
        return fileCallback != nullptr ? fileCallback(context, 100, 100, ResultSuccess, path)
                                       : result;
    }
    for (std::uint64_t left = total; result == ResultSuccess && left > 0; walk.Advance()) {
        result = walk.Read();
        if (result != ResultSuccess) {
            break;
        }
        const std::size_t count = std::min<std::uint64_t>(walk.Bytes().size(), left);
        std::size_t written = 0;
        result = output.Write(walk.Bytes().data(), count, &written);
        left -= written;
        // The callback decides whether a failed write ends the copy: its answer replaces the error.
        if (fileCallback != nullptr) {
            result = fileCallback(context, Percent(total - left, total), 100, result, path);
        }
    }
    if (result > 0 && fileCallback != nullptr) {
        (void)fileCallback(context, 100, 100, result,
                           path);  // a report; its answer changes nothing any more
    }
    return result;
}

namespace {

// The copying of a preview, into the file or, without one, into the buffer. *outCopied counts the buffer's bytes.
ResultCode CopyPreview(ClusterWalk& walk,
                       std::uint64_t total,
                       OutputFile& file,
                       const PreviewRequest& request,
                       std::uint32_t* outCopied)
{
    ResultCode result = ResultSuccess;
    for (std::uint64_t done = 0; result == ResultSuccess && done < total; walk.Advance()) {
        result = walk.Read();
        if (result != ResultSuccess) {
            break;
        }
        const std::size_t count = std::min<std::uint64_t>(walk.Bytes().size(), total - done);
        std::size_t taken = count;
        if (file.IsOpen()) {
            result = file.Write(walk.Bytes().data(), count, &taken);
        } else {
            std::memcpy(request.buffer + done, walk.Bytes().data(), count);
            *outCopied += static_cast<std::uint32_t>(count);
        }
        done += taken;
        if (request.progressFn != nullptr) {
            result = request.progressFn(request.context, Percent(done, total), result);
        }
    }
    return result;
}

}  // namespace

ResultCode PreviewClusters(const ClusterReader& reader,
                           const FileRecord& record,
                           const PreviewRequest& request)
{
    OutputFile file;
    const bool toFile = PreviewNeedsFile(record.NameText());
    if (toFile) {
        if (const ResultCode opened = OpenPreviewFile(record.NameText(), request.tempPath, file)) {
            return opened;
        }
    }
    ClusterWalk walk(reader, record);
    ResultCode result = walk.SizeError();
    std::uint64_t total = record.FileSize;
    if (!toFile) {
        total = request.buffer != nullptr ? std::min<std::uint64_t>(total, request.inOutSize) : 0;
    }
    std::uint32_t copied = 0;
    if (total == 0 && result == ResultSuccess && request.progressFn != nullptr) {
        result = request.progressFn(request.context, 100, result);
    } else if (result == ResultSuccess) {
        result = CopyPreview(walk, total, file, request, &copied);
    }
    if (result > 0 && request.progressFn != nullptr) {
        (void)request.progressFn(request.context, 100,
                                 result);  // a report; its answer changes nothing
    }
    file.Close();
    if (toFile && result != ResultSuccess) {
        (void)RemoveFile(
            request.tempPath);  // half a picture is of no use; what stays is replaced next time
    }
    request.inOutSize = copied;
    return result;
}
