#include "storage/ByteReader.h"

#include "storage/DriveRegistry.h"

#include <utility>

namespace {

// Behind a file or device descriptor.
class HandleReader : public IByteReader
{
public:
    explicit HandleReader(FileHandle handle) : m_handle(std::move(handle)) {}
    ResultCode ReadAt(std::uint64_t position,
                      std::uint8_t* buffer,
                      std::size_t count,
                      std::size_t* outRead) override
    {
        return m_handle.ReadAt(position, buffer, count, outRead);
    }

private:
    FileHandle m_handle;
};

ReaderDecorator& CurrentDecorator()
{
    static ReaderDecorator decorator;
    return decorator;
}

std::unique_ptr<IByteReader> Decorated(FileHandle handle)
{
    std::unique_ptr<IByteReader> reader = std::make_unique<HandleReader>(std::move(handle));
    return CurrentDecorator() ? CurrentDecorator()(std::move(reader)) : std::move(reader);
}

}  // namespace

ResultCode OpenDriveSource(std::uint32_t diskNumber, OpenedSource& outSource)
{
    FileHandle handle;
    if (const ResultCode result = DriveRegistry::Instance().Open(diskNumber, handle)) {
        return result;
    }
    std::uint64_t sizeBytes = 0;
    if (const ResultCode result = handle.Size(&sizeBytes)) {
        return result;
    }
    // The kernel keeps what it read from the disk before; a mounted volume may have changed since.
    handle.DropCache();
    const std::uint32_t sectorSize = handle.DeviceSectorSize();
    outSource.sectorSize = sectorSize != 0 ? sectorSize : 512;
    outSource.sizeBytes = sizeBytes;
    outSource.reader = Decorated(std::move(handle));
    return ResultSuccess;
}

ResultCode OpenImageSource(const std::filesystem::path& path, OpenedSource& outSource)
{
    FileHandle handle;
    if (const ResultCode result = handle.OpenForReading(path)) {
        return result;
    }
    std::uint64_t sizeBytes = 0;
    if (const ResultCode result = handle.Size(&sizeBytes)) {
        return result;
    }
    outSource.sectorSize = 512;
    outSource.sizeBytes = sizeBytes;
    outSource.reader = Decorated(std::move(handle));
    return ResultSuccess;
}

ResultCode
ReadWhole(IByteReader& reader, std::uint64_t position, std::uint8_t* buffer, std::size_t count)
{
    std::size_t got = 0;
    const ResultCode result = reader.ReadAt(position, buffer, count, &got);
    if (result != ResultSuccess) {
        return result;
    }
    return got == count ? ResultSuccess : ResultShortRead;
}

void SetReaderDecorator(ReaderDecorator decorator)
{
    CurrentDecorator() = std::move(decorator);
}
