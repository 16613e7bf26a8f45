#include "storage/ScanSource.h"

#include <algorithm>
#include <utility>

ScanSource::ScanSource(ScanIdentity identity, OpenedSource opened)
    : m_identity(std::move(identity)), m_opened(std::move(opened))
{
    const std::uint64_t unit = SectorSize();
    const bool isWhole = SectorCount() == 0 || SectorCount() > TotalSectors();
    m_marks = std::make_shared<ScanMarks>(StartLba() * unit,
                                          isWhole ? SizeBytes() : SectorCount() * unit);
}

ResultCode ScanSource::OpenImage(const std::filesystem::path& path,
                                 std::shared_ptr<ScanSource>* outSource)
{
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(path, opened)) {
        return result;
    }
    const std::uint64_t sectors = opened.sizeBytes / ImageSectorSize;
    outSource->reset(new ScanSource({ImageDiskNumber, 0, sectors, path}, std::move(opened)));
    return ResultSuccess;
}

ResultCode ScanSource::OpenImageRange(const std::filesystem::path& path,
                                      std::uint64_t startLba,
                                      std::uint64_t sectorCount,
                                      std::shared_ptr<ScanSource>* outSource)
{
    OpenedSource opened;
    if (const ResultCode result = OpenImageSource(path, opened)) {
        return result;
    }
    outSource->reset(
        new ScanSource({ImageDiskNumber, startLba, sectorCount, path}, std::move(opened)));
    return ResultSuccess;
}

ResultCode ScanSource::OpenDriveRange(std::uint32_t diskNumber,
                                      std::uint64_t startLba,
                                      std::uint64_t sectorCount,
                                      std::shared_ptr<ScanSource>* outSource)
{
    OpenedSource opened;
    if (const ResultCode result = OpenDriveSource(diskNumber, DriveFlush::Flush, opened)) {
        return result;
    }
    outSource->reset(new ScanSource({diskNumber, startLba, sectorCount, {}}, std::move(opened)));
    return ResultSuccess;
}

ResultCode ScanSource::OpenAgain(std::shared_ptr<ScanSource>* outSource) const
{
    OpenedSource opened;
    const ResultCode result =
        IsImage() ? OpenImageSource(m_identity.imagePath, opened)
                  : OpenDriveSource(m_identity.diskNumber, DriveFlush::None, opened);
    if (result == ResultSuccess) {
        outSource->reset(new ScanSource(m_identity, std::move(opened)));
        (*outSource)->m_marks = m_marks;
    }
    return result;
}

ResultCode ScanSource::ReadStart(std::uint8_t* buffer, std::size_t count) const
{
    const std::uint64_t start = StartLba() * SectorSize();
    if (Missing() == nullptr) {
        return ReadWhole(Reader(), start, buffer, count);
    }
    if (start > SizeBytes() || count > SizeBytes() - start) {
        return ResultShortRead;
    }
    std::fill_n(buffer, count, std::uint8_t{0});
    for (std::size_t at = 0; at < count; at += SectorSize()) {
        const ResultCode result = ReadWhole(Reader(), start + at, buffer + at,
                                            std::min<std::size_t>(SectorSize(), count - at));
        if (result != ResultSuccess && result != ResultReadFault) {
            return result;
        }
    }
    return ResultSuccess;
}

SectorRanges ScanSource::Unread() const
{
    const std::lock_guard guard(m_lock);
    return m_unread;
}

void ScanSource::NoteUnread(std::uint64_t position, std::uint64_t count, ResultCode result)
{
    if (result == ResultNotConnected || (result == ResultSuccess && position < SizeBytes())) {
        m_gone = true;
    }
    if (m_gone) {
        return;  // all of it is read again when the source is back
    }
    m_marks->NoteUnread(position, count);
    const std::uint64_t unit = SectorSize();
    const std::uint64_t first = position / unit;
    const std::lock_guard guard(m_lock);
    m_unread.Add(first, (position + count + unit - 1) / unit - first);
    m_unreadSectors = m_unread.Sectors();
}

void ScanSource::NoteUnread(const SectorRanges& ranges)
{
    for (const auto& [first, end] : ranges.Ends()) {
        m_marks->NoteUnread(first * SectorSize(), (end - first) * SectorSize());
    }
    const std::lock_guard guard(m_lock);
    m_unread.AddAll(ranges);
    m_unreadSectors = m_unread.Sectors();
}
