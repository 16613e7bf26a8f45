#include "storage/SectorSource.h"

#include <algorithm>
#include <atomic>

namespace {

// A failing disk returns control at a known point.
constexpr std::size_t LargestPiece = 65536;
constexpr std::uint64_t ImageSectorSize = 512;

std::uint64_t NextOpenNumber()
{
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

}  // namespace

ResultCode SectorSource::OpenDrive(std::uint32_t diskNumber)
{
    OpenedSource source;
    const ResultCode result = OpenDriveSource(diskNumber, source);
    if (result == ResultSuccess) {
        totalSectors = source.sizeBytes / source.sectorSize;
        totalBytes = source.sizeBytes;
        m_reader = std::move(source.reader);
        m_openNumber = NextOpenNumber();
    }
    return result;
}

ResultCode SectorSource::OpenImage(const std::filesystem::path& filePath)
{
    OpenedSource source;
    const ResultCode result = OpenImageSource(filePath, source);
    if (result == ResultSuccess) {
        totalSectors = source.sizeBytes / ImageSectorSize;
        totalBytes = source.sizeBytes;
        m_reader = std::move(source.reader);
        m_openNumber = NextOpenNumber();
    }
    return result;
}

ResultCode SectorSource::ReadSectors(std::uint8_t* buffer,
                                     std::int32_t sectorCount,
                                     std::uint64_t lba,
                                     std::int32_t sectorSize,
                                     std::int32_t* outSectorsRead)
{
    if (sectorCount < 0 || sectorSize <= 0 || m_reader == nullptr) {
        return ResultInvalidParameter;
    }
    // Sector 2^64 - 1 wraps to an end of 0: a detector asks for it in front of sector 0.
    const std::uint64_t end = lba + static_cast<std::uint64_t>(sectorCount);
    if (end > totalSectors || end < lba) {
        return ResultInvalidParameter;
    }
    const std::uint64_t unit = static_cast<std::uint64_t>(sectorSize);
    const std::size_t wanted = static_cast<std::size_t>(sectorCount) * unit;
    std::size_t done = 0;
    ResultCode result = ResultSuccess;
    while (done < wanted && result == ResultSuccess) {
        std::size_t got = 0;
        result = m_reader->ReadAt(lba * unit + done, buffer + done,
                                  std::min(LargestPiece, wanted - done), &got);
        done += got;
        if (result != ResultSuccess || got == 0) {
            result = ResultReadFault;
        }
    }
    *outSectorsRead = static_cast<std::int32_t>(done / unit);
    return result;
}
