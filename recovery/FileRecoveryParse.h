// The one interface behind which every way of finding files stands, and the callbacks through which an
// engine reports and is cancelled.
#pragma once

#include "platform/ResultCode.h"
#include "recovery/FileRecord.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

// Called during Scan, on the engine's thread. progress counts to 100 of range; secondsLeft is negative when
// not known; the sector and file counts are 0 outside the deep pass; reserved is 0.
// 0 goes on; anything else stops the engine, which returns it.
using ProgressCallback = ResultCode (*)(void* context,
                                        std::int32_t progress,
                                        std::int32_t range,
                                        std::int32_t secondsLeft,
                                        std::uint64_t doneSectors,
                                        std::uint64_t totalSectors,
                                        std::uint64_t filesFound,
                                        std::uint32_t reserved);

// Called during RestoreRecord: percent of the file at path, range always 100, error 0 or a result code.
// A non-zero result stops the restore and becomes its result.
using FileProgressCallback = ResultCode (*)(void* context,
                                            std::int32_t percent,
                                            std::int32_t range,
                                            ResultCode error,
                                            const std::filesystem::path& path);

// Called during ReadRecordData; result as above.
using PreviewProgressCallback = ResultCode (*)(void* context,
                                               std::int32_t percent,
                                               ResultCode error);

// Called during SearchRecords; a non-zero result stops the search.
using SearchProgressCallback = ResultCode (*)(void* context,
                                              std::int32_t percent,
                                              std::int32_t reserved);

// A pattern for SearchRecords that takes every file: names without extension and pictures whose head is
// gone too. No extension list looks like this.
inline constexpr std::string_view AllFilesPattern = "*";

// One thread at a time uses an engine. Made, opened, scanned; queries, restores and previews are valid only
// after Scan returned.
class IFileRecoveryParse
{
public:
    IFileRecoveryParse() = default;
    IFileRecoveryParse(const IFileRecoveryParse&) = delete;
    IFileRecoveryParse& operator=(const IFileRecoveryParse&) = delete;

    // Binds the engine to an image file. An engine that is open already answers 0 and does nothing.
    [[nodiscard]] virtual ResultCode OpenImageFile(const std::filesystem::path& filePath,
                                                   char16_t driveLetter) = 0;
    // Binds it to a range of a drive: absolute first sector and count, in the drive's own sectors.
    [[nodiscard]] virtual ResultCode OpenPartition(std::uint32_t diskNumber,
                                                   std::uint64_t startLba,
                                                   std::uint64_t sectorCount,
                                                   char16_t driveLetter) = 0;
    // Stores all four; either callback may be null.
    virtual ResultCode SetCallbacks(ProgressCallback scanCallback,
                                    FileProgressCallback fileCallback,
                                    void* context,
                                    std::int32_t progressRange) = 0;
    // Scans into a new store with a null name; with a name reopens that store and scans nothing.
    [[nodiscard]] virtual ResultCode Scan(const std::string* logName) = 0;
    // Appends the children of a folder, sorted; a null parent with depth 0 is the root.
    [[nodiscard]] virtual ResultCode ListChildren(const FileRecord* parentRecord,
                                                  std::uint32_t depth,
                                                  FileRecordList& outRecords) = 0;
    // Counts the files below a folder.
    [[nodiscard]] virtual ResultCode
    CountChildren(const FileRecord* parentRecord, std::uint32_t depth, std::uint32_t& outCount) = 0;
    // Records written since the store was made: 0 on a reopened one.
    virtual std::uint64_t GetRecordCount() const = 0;
    // The folders above a record, each followed by "\"; neither drive nor the record's own name.
    [[nodiscard]] virtual ResultCode GetRecordPath(const FileRecord* record,
                                                   std::string& outPath) = 0;
    // Writes a file to destPath, or a folder's tree below it; baseDepth is the number of path separators in
    // the destination root.
    [[nodiscard]] virtual ResultCode RestoreRecord(const FileRecord* record,
                                                   const std::filesystem::path& destPath,
                                                   std::uint32_t baseDepth) = 0;
    // The next run of free sectors at or after *inOutSector, relative to the partition start. 0 when the
    // engine has no map; the arguments are untouched then.
    virtual std::int32_t NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength) = 0;
    virtual ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) = 0;
    // Appends every file whose extension is a substring of the pattern, then sorts the whole list. 1 when
    // the record file was read, also when the callback stopped it; 0 when it could not be opened.
    virtual std::int32_t SearchRecords(std::string_view extensionPattern,
                                       FileRecordList& outRecords) = 0;
    // 0 when the engine can answer NextFreeRange from now on (or has nothing to build).
    [[nodiscard]] virtual ResultCode BuildUsedClusterMap() = 0;
    // A picture, clip or sound goes to a temporary file whose path is stored; anything else into buffer, up
    // to *inOutSize bytes. *inOutSize becomes the bytes put into buffer.
    [[nodiscard]] virtual ResultCode ReadRecordData(const FileRecord* record,
                                                    std::filesystem::path& tempPathInOut,
                                                    std::uint8_t* buffer,
                                                    std::uint32_t& inOutSize,
                                                    PreviewProgressCallback progressFn,
                                                    void* context) = 0;
    virtual ~IFileRecoveryParse() = default;
};
