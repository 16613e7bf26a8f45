// Copies the data of one record out of a source, to a file being restored or into a preview. One loop for all engines:
// each hands over a reader of "the next bytes of this record", and how its callbacks are called.
#pragma once

#include "recovery/DataPlaces.h"
#include "recovery/FileRecoveryParse.h"

#include <cstdint>
#include <filesystem>
#include <span>

// In what the engines differ when they copy. The calls of the callbacks are a part of their interface.
struct CopyManners
{
    bool tellsOpenFailure = false;  // an output that cannot be opened is told at 100
    bool tellsEmptyFile = false;    // a file of size 0 is told once, at 100
    // Each step is told with its error so far, and the answer replaces that: 0 goes on after a write error. But a
    // write that took nothing ends the copy: what is full stays full.
    bool answerReplacesWriteError = false;
    bool readsToItsEnd = false;      // also what lies after the last byte that is wanted
    bool clearsPreviewPath = false;  // of a preview that failed
};

// The next bytes of a record, which knows where they lie. It holds neither buffer nor file nor callback.
class IRecordReader
{
public:
    IRecordReader() = default;
    IRecordReader(const IRecordReader&) = delete;
    IRecordReader& operator=(const IRecordReader&) = delete;
    virtual ~IRecordReader() = default;

    virtual CopyManners Manners() const = 0;
    // Finds the data, of which wanted bytes are needed. *outBufferBytes is how large the buffer of Next must be.
    [[nodiscard]] virtual ResultCode Begin(std::uint64_t wanted, std::size_t* outBufferBytes) = 0;
    // Brings the next piece into the buffer; 0 bytes at the end. *outIsWhole: the piece is all that there is, told at
    // 100 percent with its error.
    [[nodiscard]] virtual ResultCode
    Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool* outIsWhole) = 0;
    // In place of Begin and Next: where the first wanted bytes would come from. False where that cannot be told.
    [[nodiscard]] virtual bool FindPlaces(std::uint64_t /*wanted*/, BytePlaces& /*outPlaces*/)
    {
        return false;
    }
};

// Writes the record to path, FileSize bytes. What was written stays, also after an error or a cancel. An error that ends
// the copy is told at 100 percent, its answer changing nothing any more; a cancel or a private code is not.
[[nodiscard]] ResultCode RestoreData(IRecordReader& reader,
                                     const FileRecord& record,
                                     const std::filesystem::path& path,
                                     FileProgressCallback fileCallback,
                                     void* context);

// Where the data of a preview goes, and who is told.
struct PreviewRequest
{
    std::filesystem::path root;  // of the log of scans, where temporary files go
    std::filesystem::path& tempPath;
    std::uint8_t* buffer;
    std::uint32_t& inOutSize;
    PreviewProgressCallback progressFn;
    void* context;
};

// A picture, sound or clip to its temporary file, anything else into the buffer. The file is removed after an error.
[[nodiscard]] ResultCode
PreviewData(IRecordReader& reader, const FileRecord& record, const PreviewRequest& request);
