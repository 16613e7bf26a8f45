// Where the bytes of a source come from: a device, an image file, or a fake that fails on purpose.
#pragma once

#include "platform/FileHandle.h"
#include "storage/SectorRanges.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>

// Reads bytes at a position; none is ever written through. One thread at a time reads through each.
class IByteReader
{
public:
    IByteReader() = default;
    IByteReader(const IByteReader&) = delete;
    IByteReader& operator=(const IByteReader&) = delete;
    virtual ~IByteReader() = default;
    // As FileHandle::ReadAt: *outRead is always set, fewer bytes with result 0 means the end.
    [[nodiscard]] virtual ResultCode ReadAt(std::uint64_t position,
                                            std::uint8_t* buffer,
                                            std::size_t count,
                                            std::size_t* outRead) = 0;
    // The same of whole sectors of a device, where it can be past the system's cache: what fails is what cannot be read, and
    // nothing around it. Slower where all is well.
    [[nodiscard]] virtual ResultCode ReadExactly(std::uint64_t position,
                                                 std::uint8_t* buffer,
                                                 std::size_t count,
                                                 std::size_t* outRead)
    {
        return ReadAt(position, buffer, count, outRead);
    }
};

// A source as opened: what to read from, and what the platform tells about it.
struct OpenedSource
{
    std::unique_ptr<IByteReader> reader;
    std::uint64_t sizeBytes = 0;
    std::uint32_t sectorSize = 512;  // a drive's logical sector size; 512 for image files
    // Of an image what the map beside it calls not read: known to fail. Null when nothing is.
    std::shared_ptr<const SectorRanges> missing;
};

// Flush brings to the disk what mounted file systems on it still hold in memory, and drops what the system has read of
// it before: what a user has deleted a moment ago is seen.
enum class DriveFlush
{
    None,
    Flush
};
// Opens a drive by its number in the DriveRegistry. The out parameter is untouched on failure.
[[nodiscard]] ResultCode
OpenDriveSource(std::uint32_t diskNumber, DriveFlush flush, OpenedSource& outSource);
// Opens an image file (or anything seekable) read-only.
[[nodiscard]] ResultCode OpenImageSource(const std::filesystem::path& path,
                                         OpenedSource& outSource);

// Reads from a handle, which it owns from now on. Not decorated.
std::unique_ptr<IByteReader> MakeHandleReader(FileHandle handle);

// One read of exactly count bytes: 0, the platform's error, or ResultShortRead when fewer came.
[[nodiscard]] ResultCode
ReadWhole(IByteReader& reader, std::uint64_t position, std::uint8_t* buffer, std::size_t count);

// Every source opened from now on goes through the decorator; an empty one takes it out again. Tests use
// it to damage reads on purpose; it is set while no other thread opens a source.
using ReaderDecorator = std::function<std::unique_ptr<IByteReader>(std::unique_ptr<IByteReader>)>;
void SetReaderDecorator(ReaderDecorator decorator);
