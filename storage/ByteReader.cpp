#include "storage/ByteReader.h"

#include "platform/StorageMap.h"
#include "storage/DriveRegistry.h"
#include "storage/RescuedImage.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <utility>
#include <vector>

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
        const ResultCode result = m_handle.ReadAt(position, buffer, count, outRead);
        if (result != ResultSuccess && !m_failed) {
            m_failed = true;
            m_handle.StopReadingAhead();
        }
        return result;
    }
    ResultCode ReadExactly(std::uint64_t position,
                           std::uint8_t* buffer,
                           std::size_t count,
                           std::size_t* outRead) override
    {
        if (!m_directTried) {
            m_directTried = true;
            (void)m_handle.OpenDirect(m_direct);  // without rights to the device: as below
        }
        // For this read alone: others of the same opening need no aligned memory.
        const bool switched = !m_direct.IsOpen() && m_handle.SetDirect(true);
        if (!m_direct.IsOpen() && !switched) {
            return ReadAt(position, buffer, count, outRead);  // through the cache
        }
        m_aligned.resize(count + DirectAlignment);
        void* start = m_aligned.data();
        std::size_t room = m_aligned.size();
        start = std::align(DirectAlignment, count, start, room);
        const ResultCode result =
            (switched ? m_handle : m_direct).ReadAt(position, start, count, outRead);
        if (switched) {
            (void)m_handle.SetDirect(false);  // what set it takes it back
        }
        std::memcpy(buffer, start, *outRead);
        return result;
    }

private:
    static constexpr std::size_t DirectAlignment = 4096;

    FileHandle m_handle;
    bool m_failed = false;
    FileHandle m_direct;
    bool m_directTried = false;
    std::vector<std::uint8_t> m_aligned;
};

ReaderDecorator& CurrentDecorator()
{
    static ReaderDecorator decorator;
    return decorator;
}

std::unique_ptr<IByteReader> Decorated(FileHandle handle)
{
    std::unique_ptr<IByteReader> reader = MakeHandleReader(std::move(handle));
    return CurrentDecorator() ? CurrentDecorator()(std::move(reader)) : std::move(reader);
}

// Every mount that stands on the disk, also by way of other devices.
void SyncMountsOn(const std::string& deviceNumber)
{
    if (deviceNumber.empty()) {
        return;
    }
    const StorageMap storage;
    std::set<std::string> synced;
    for (const MountEntry& mount : storage.Mounts()) {
        const std::vector<StorageExtent> extents = storage.OfMount(mount).extents;
        const bool onDisk = std::any_of(extents.begin(), extents.end(), [&](const auto& extent) {
            return extent.deviceNumber == deviceNumber;
        });
        if (onDisk && synced.insert(mount.deviceNumber).second) {
            (void)SyncFileSystem(
                mount.mountPoint);  // without the rights to it, the disk has to do as it is
        }
    }
}

}  // namespace

std::unique_ptr<IByteReader> MakeHandleReader(FileHandle handle)
{
    return std::make_unique<HandleReader>(std::move(handle));
}

ResultCode OpenDriveSource(std::uint32_t diskNumber, DriveFlush flush, OpenedSource& outSource)
{
    const std::optional<BlockDevice> disk = DriveRegistry::Instance().Find(diskNumber);
    FileHandle handle;
    if (const ResultCode result =
            disk ? DriveRegistry::Instance().Open(diskNumber, handle) : ResultFileNotFound) {
        return result;
    }
    std::uint64_t sizeBytes = 0;
    if (const ResultCode result = handle.Size(&sizeBytes)) {
        return result;
    }
    if (flush == DriveFlush::Flush) {
        SyncMountsOn(disk->deviceNumber);
        // The kernel keeps what it read from the disk before; a mounted volume may have changed since.
        handle.FlushDevice();
        handle.DropCache();
    }
    outSource.sectorSize = std::max(disk->sectorSize, handle.DeviceSectorSize());
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
    if (SectorRanges missing = MissingSectorsOf(path, outSource.sectorSize); !missing.Empty()) {
        outSource.missing = std::make_shared<const SectorRanges>(std::move(missing));
        outSource.reader =
            MakeMissingReader(std::move(outSource.reader), outSource.missing, outSource.sectorSize);
    }
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
