// Copies a file's data out of an NTFS volume, to a file being restored or into a preview. Trusts the record as it
// stands: whether the clusters have since been given away, or hold compressed or encrypted data, is not asked.
#pragma once

#include "recovery/RestoreSupport.h"
#include "recovery/metadata/NtfsRecordCodec.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <span>

// One buffer of this size serves each copy, resident data too.
inline constexpr std::size_t CopyBufferBytes = 65536;

// How an engine reaches a record's data.
struct NtfsDataReader
{
    SectorSource& source;
    std::uint32_t bytesPerSector;
    // As NtfsReaders::ReadResidentData: what is not resident gives ResultDataNotResident.
    std::function<ResultCode(const FileRecord& record, std::span<std::uint8_t> buffer)>
        readResident;
    std::function<ResultCode(const FileRecord& record, RunList& outRuns)> readRuns;
};

// Writes record to path. Runs that end before FileSize end the file early, with success; those behind it are read to
// their end. An error that ends the copy is reported to fileCallback, a cancel or a private code is not.
[[nodiscard]] ResultCode RestoreNtfsFile(const NtfsDataReader& reader,
                                         const FileRecord& record,
                                         const std::filesystem::path& path,
                                         FileProgressCallback fileCallback,
                                         void* context);

// Where the data of a preview goes, and who is told.
struct NtfsPreviewRequest
{
    std::filesystem::path& tempPath;
    std::uint8_t* buffer;
    std::uint32_t& inOutSize;
    PreviewProgressCallback progressFn;
    void* context;
};

// A picture, sound or clip to its temporary file, anything else into the buffer. After an error the file is removed;
// clearPathOnError decides whether its path is emptied too.
[[nodiscard]] ResultCode PreviewNtfsFile(const NtfsDataReader& reader,
                                         const FileRecord& record,
                                         const NtfsPreviewRequest& request,
                                         bool clearPathOnError);
