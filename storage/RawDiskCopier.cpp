#include "storage/RawDiskCopier.h"

#include "platform/FileTime.h"
#include "platform/Folders.h"

#include <algorithm>

namespace {

constexpr std::uint64_t PieceBytes = 65536;
constexpr std::uint64_t EstimateMilliseconds = 5000;

std::int32_t SecondsLeft(std::uint64_t done, std::uint64_t total, std::uint64_t milliseconds)
{
    const std::uint64_t elapsed = std::max<std::uint64_t>(milliseconds / 1000, 1);
    const std::uint64_t rate = std::max<std::uint64_t>(done / elapsed, 1);
    return static_cast<std::int32_t>(std::min<std::uint64_t>((total - done) / rate, INT32_MAX));
}

// Rounded down; in two steps, since a hundred times the bytes of a disk need more than 64 bits only on paper.
std::int32_t PercentOf(std::uint64_t done, std::uint64_t total)
{
    return static_cast<std::int32_t>(done <= UINT64_MAX / 100 ? done * 100 / total
                                                              : done / (total / 100));
}

}  // namespace

ResultCode RawDiskCopier::Copy(std::uint32_t diskNumber,
                               std::uint64_t startSector,
                               std::uint64_t sectorCount,
                               const std::filesystem::path& outputPath,
                               ImageProgressCallback callback,
                               void* context)
{
    SectorSize = 512;
    StartSector = startSector;
    SectorCount = sectorCount;
    Callback = callback;
    Context = context;
    SourceOpened = false;
    WrittenSectors = 0;
    FailedSector = 0;
    ResultCode result = Open(diskNumber, outputPath);
    if (result == ResultSuccess) {
        result = Run();
    }
    Close();
    return result;
}

ResultCode RawDiskCopier::Open(std::uint32_t diskNumber, const std::filesystem::path& outputPath)
{
    if (const ResultCode result = OpenDriveSource(diskNumber, DriveFlush::Flush, m_source)) {
        return result;
    }
    SourceOpened = true;
    SectorSize = m_source.sectorSize;
    if (SectorCount == 0) {
        SectorCount = m_source.sizeBytes / SectorSize;
    }
    // A range that no disk can have would wrap around below.
    if (SectorCount > UINT64_MAX / SectorSize ||
        StartSector > UINT64_MAX / SectorSize - SectorCount) {
        return ResultInvalidParameter;
    }
    // Never onto a device or into a pipe, whatever asks for it.
    std::error_code ignored;
    if (PathExists(outputPath) && !std::filesystem::is_regular_file(outputPath, ignored)) {
        return ResultAccessDenied;
    }
    if (const ResultCode result = m_target.OpenOrCreate(outputPath)) {
        return result;
    }
    m_buffer.resize(PieceBytes);
    return ResultSuccess;
}

void RawDiskCopier::Close()
{
    m_source = OpenedSource();
    m_target.Close();
    m_buffer = {};
}

ResultCode RawDiskCopier::Run()
{
    const std::uint64_t total = SectorCount * SectorSize;
    const std::uint64_t startTick = TickMilliseconds();
    std::uint64_t lastEstimate = startTick;
    std::int32_t secondsLeft = -1;
    for (std::uint64_t done = 0; done < total;) {
        const std::uint64_t chunk = std::min(PieceBytes, total - done);
        if (const ResultCode result = CopyPiece(done, static_cast<std::size_t>(chunk))) {
            return result;
        }
        done += chunk;
        WrittenSectors = done / SectorSize;
        const std::uint64_t now = TickMilliseconds();
        if (now - lastEstimate >= EstimateMilliseconds) {
            secondsLeft = SecondsLeft(done, total, now - startTick);
            lastEstimate = now;
        }
        const ResultCode answer = Callback != nullptr
                                      ? Callback(Context, PercentOf(done, total), WrittenSectors,
                                                 total / SectorSize, secondsLeft)
                                      : ResultSuccess;
        if (answer != ResultSuccess) {
            return answer;
        }
    }
    return ResultSuccess;
}

// What was read of a piece with a bad sector in it is not written.
ResultCode RawDiskCopier::CopyPiece(std::uint64_t position, std::size_t size)
{
    std::size_t done = 0;
    while (done < size) {
        std::size_t got = 0;
        const ResultCode result = m_source.reader->ReadAt(
            StartSector * SectorSize + position + done, m_buffer.data() + done, size - done, &got);
        done += got;
        if (result != ResultSuccess || got == 0) {
            FailedSector = FirstBadSector(StartSector + (position + done) / SectorSize,
                                          StartSector + (position + size) / SectorSize);
            return ResultReadFault;
        }
    }
    return m_target.WriteAt(position, m_buffer.data(), size);
}

// The system reads in larger pieces and fails them as a whole. When none fails by itself, the piece's first one stands for it.
std::uint64_t RawDiskCopier::FirstBadSector(std::uint64_t sector, std::uint64_t endSector)
{
    for (std::uint64_t lba = sector; lba < endSector; ++lba) {
        std::size_t got = 0;
        const ResultCode result =
            m_source.reader->ReadExactly(lba * SectorSize, m_buffer.data(), SectorSize, &got);
        if (result != ResultSuccess || got < SectorSize) {
            return lba;
        }
    }
    return sector;
}
