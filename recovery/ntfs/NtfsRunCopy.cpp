#include "recovery/ntfs/NtfsRunCopy.h"

#include "platform/Folders.h"
#include "recovery/metadata/NtfsVolume.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

// Takes one piece of the data. False in outGoOn ends the copy without an error.
using TakePiece = std::function<ResultCode(std::span<const std::uint8_t> piece, bool* outGoOn)>;

std::int32_t Percent(std::uint64_t done, std::uint64_t total)
{
    return static_cast<std::int32_t>(total != 0 ? done * 100 / total : 100);
}

// Bytes to take of a resident value: the length comes from the record, and behind the value there are zeros.
std::size_t ResidentSize(const FileRecord& record)
{
    return std::min<std::size_t>(record.FileSize & 0xFFFFFFFF, CopyBufferBytes);
}

// All runs from end to end, also those behind the last byte that is wanted.
ResultCode CopyRuns(const NtfsDataReader& reader,
                    const FileRecord& record,
                    const RunList& runs,
                    std::span<std::uint8_t> buffer,
                    const TakePiece& take)
{
    const std::uint64_t sectorSize = reader.bytesPerSector;
    std::uint64_t lcn = 0;
    for (const NtfsRun& run : runs) {
        std::uint64_t runBytes = run.Length * record.ClusterBytes;
        lcn += static_cast<std::uint64_t>(run.Offset);
        // A sparse run has the offset 0: what lies where the run before began is copied again.
        std::uint64_t sector = SectorOfCluster(lcn, record.ClusterBytes, reader.bytesPerSector) +
                               record.PartitionStart;
        while (runBytes > 0) {
            const std::uint64_t chunk = std::min<std::uint64_t>(runBytes, buffer.size());
            std::int32_t sectorsRead = 0;
            const ResultCode result = reader.source.ReadSectors(
                buffer.data(), static_cast<std::int32_t>(chunk / sectorSize), sector,
                static_cast<std::int32_t>(sectorSize), &sectorsRead);
            if (sectorsRead == 0) {
                return ResultReadFault;
            }
            if (result != ResultSuccess) {
                return result;
            }
            const std::uint64_t bytesRead = static_cast<std::uint64_t>(sectorsRead) * sectorSize;
            runBytes -= bytesRead;
            sector += static_cast<std::uint64_t>(sectorsRead);
            bool goOn = true;
            const ResultCode taken = take(buffer.first(bytesRead), &goOn);
            if (taken != ResultSuccess || !goOn) {
                return taken;
            }
        }
    }
    return ResultSuccess;
}

// Told of each step of a restore or preview: percent and error so far. Its answer ends the work when it is not 0.
using ReportStep = std::function<ResultCode(std::int32_t percent, ResultCode error)>;

ResultCode CopyRunsToFile(const NtfsDataReader& reader,
                          const FileRecord& record,
                          std::span<std::uint8_t> buffer,
                          OutputFile& output,
                          const ReportStep& report)
{
    RunList runs;
    if (const ResultCode result = reader.readRuns(record, runs)) {
        return result;
    }
    const std::uint64_t total = record.FileSize;
    if (total == 0) {
        return ResultSuccess;
    }
    std::uint64_t left = total;
    return CopyRuns(reader, record, runs, buffer,
                    [&](std::span<const std::uint8_t> piece, bool* /*outGoOn*/) -> ResultCode {
                        const std::size_t count = std::min<std::uint64_t>(piece.size(), left);
                        std::size_t written = 0;
                        const ResultCode result = output.Write(piece.data(), count, &written);
                        left -= written;
                        return result != ResultSuccess ? result
                                                       : report(Percent(total - left, total), 0);
                    });
}

// The data of a record to an open file, resident or not.
ResultCode CopyToFile(const NtfsDataReader& reader,
                      const FileRecord& record,
                      OutputFile& output,
                      const ReportStep& report)
{
    std::vector<std::uint8_t> buffer(CopyBufferBytes);
    ResultCode result = reader.readResident(record, buffer);
    if (result == ResultDataNotResident) {
        return CopyRunsToFile(reader, record, buffer, output, report);
    }
    if (result == ResultSuccess) {
        result = output.Write(buffer.data(), ResidentSize(record));
        if (const ResultCode answer = report(100, result)) {
            result = answer;
        }
    }
    return result;
}

// The same into the buffer of a preview; *outCopied counts its bytes.
ResultCode CopyToBuffer(const NtfsDataReader& reader,
                        const FileRecord& record,
                        std::span<std::uint8_t> output,
                        const ReportStep& report,
                        std::uint32_t* outCopied)
{
    std::vector<std::uint8_t> buffer(CopyBufferBytes);
    std::uint64_t total = record.FileSize;  // by value: the field is not aligned
    total = std::min<std::uint64_t>(total, output.size());
    std::size_t copied = 0;
    ResultCode result = reader.readResident(record, buffer);
    if (result == ResultSuccess) {
        copied = std::min<std::size_t>(total, buffer.size());
        std::copy_n(buffer.begin(), copied, output.begin());
        result = report(100, result);
    } else if (result == ResultDataNotResident) {
        RunList runs;
        result = reader.readRuns(record, runs);
        if (result == ResultSuccess && total != 0) {
            result =
                CopyRuns(reader, record, runs, buffer,
                         [&](std::span<const std::uint8_t> piece, bool* outGoOn) {
                             const std::size_t count =
                                 std::min<std::uint64_t>(piece.size(), total - copied);
                             *outGoOn = count > 0;
                             std::memcpy(output.data() + copied, piece.data(), count);
                             copied += count;
                             return count > 0 ? report(Percent(copied, total), 0) : ResultSuccess;
                         });
        }
    }
    *outCopied = static_cast<std::uint32_t>(copied);
    return result;
}

}  // namespace

ResultCode RestoreNtfsFile(const NtfsDataReader& reader,
                           const FileRecord& record,
                           const std::filesystem::path& path,
                           FileProgressCallback fileCallback,
                           void* context)
{
    const ReportStep report = [&](std::int32_t percent, ResultCode error) {
        return fileCallback != nullptr ? fileCallback(context, percent, 100, error, path)
                                       : ResultSuccess;
    };
    OutputFile output;
    ResultCode result = output.Open(path);
    if (result == ResultSuccess) {
        result = CopyToFile(reader, record, output, report);
    }
    if (result > 0) {
        (void)report(100, result);  // its answer changes nothing any more
    }
    return result;
}

ResultCode PreviewNtfsFile(const NtfsDataReader& reader,
                           const FileRecord& record,
                           const NtfsPreviewRequest& request,
                           bool clearPathOnError)
{
    const ReportStep report = [&](std::int32_t percent, ResultCode error) {
        return request.progressFn != nullptr ? request.progressFn(request.context, percent, error)
                                             : ResultSuccess;
    };
    std::uint32_t copied = 0;
    ResultCode result = ResultSuccess;
    OutputFile file;
    if (PreviewNeedsFile(record.NameText())) {
        result = OpenPreviewFile(record.NameText(), request.tempPath, file);
        if (result == ResultSuccess) {
            result = CopyToFile(reader, record, file, report);
        }
    } else {
        const std::size_t capacity = request.buffer != nullptr ? request.inOutSize : 0;
        result = CopyToBuffer(reader, record, {request.buffer, capacity}, report, &copied);
    }
    if (result > 0) {
        (void)report(100, result);  // as above
    }
    if (file.IsOpen()) {
        file.Close();
        if (result != ResultSuccess) {
            // Half a picture is of no use; what stays is replaced next time.
            (void)RemoveFile(request.tempPath);
            if (clearPathOnError) {
                request.tempPath.clear();
            }
        }
    }
    request.inOutSize = copied;
    return result;
}
