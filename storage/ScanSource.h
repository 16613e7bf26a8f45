// What a scan reads, opened once and handed to all that read: an image, a range of an image, or a range of a drive.
#pragma once

#include "storage/ByteReader.h"
#include "storage/ScanMarks.h"
#include "storage/SectorRanges.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>

// What a scan is of, as the log of scans keeps it: a range of a drive, or of an image when imagePath is not empty.
struct ScanIdentity
{
    std::uint32_t diskNumber = 0;  // ImageDiskNumber for an image
    std::uint64_t startLba = 0;
    std::uint64_t sectorCount = 0;
    std::filesystem::path imagePath;
};

inline constexpr std::uint32_t ImageDiskNumber = 0x80;  // in place of a drive's number
inline constexpr std::uint32_t ImageSectorSize = 512;   // whatever the volume inside has

// Every new scan makes one; the restores and previews of that scan use it. Opening a drive first brings to the disk what
// mounted file systems on it hold in memory, and drops what the system has read of it before: once, not for each that
// reads. What it reads never changes after its opening; it closes when the last one lets go.
class ScanSource
{
public:
    // The whole file; a last partial sector is lost. *outSource is untouched on failure, here and below.
    [[nodiscard]] static ResultCode OpenImage(const std::filesystem::path& path,
                                              std::shared_ptr<ScanSource>* outSource);
    [[nodiscard]] static ResultCode OpenImageRange(const std::filesystem::path& path,
                                                   std::uint64_t startLba,
                                                   std::uint64_t sectorCount,
                                                   std::shared_ptr<ScanSource>* outSource);
    // A drive by its number in the DriveRegistry; in the drive's own sectors. The range is not held against its size.
    [[nodiscard]] static ResultCode OpenDriveRange(std::uint32_t diskNumber,
                                                   std::uint64_t startLba,
                                                   std::uint64_t sectorCount,
                                                   std::shared_ptr<ScanSource>* outSource);
    // The same target behind a descriptor of its own, for a thread that reads ahead. Nothing is flushed again.
    [[nodiscard]] ResultCode OpenAgain(std::shared_ptr<ScanSource>* outSource) const;

    const ScanIdentity& Identity() const { return m_identity; }
    bool IsImage() const { return !m_identity.imagePath.empty(); }
    std::uint64_t StartLba() const { return m_identity.startLba; }
    std::uint64_t SectorCount() const { return m_identity.sectorCount; }
    std::uint32_t SectorSize() const { return m_opened.sectorSize; }
    // Of the whole drive or file, not of the range.
    std::uint64_t SizeBytes() const { return m_opened.sizeBytes; }
    std::uint64_t TotalSectors() const { return m_opened.sizeBytes / m_opened.sectorSize; }

    IByteReader& Reader() const { return *m_opened.reader; }
    // Null when nothing is known to fail.
    const SectorRanges* Missing() const { return m_opened.missing.get(); }
    // The first count bytes of the range, or the failure: ResultShortRead when it has less. What is known to be missing
    // comes as zeros: the rest may tell enough.
    [[nodiscard]] ResultCode ReadStart(std::uint8_t* buffer, std::size_t count) const;

    // For a picture of the scan; shared with the sources that are opened again.
    const std::shared_ptr<ScanMarks>& Marks() const { return m_marks; }

    // What could not be read so far, of the whole drive or file, by anyone who reads through this source; any thread may
    // ask.
    SectorRanges Unread() const;
    std::uint64_t UnreadSectors() const { return m_unreadSectors; }
    // The device is no longer there, or the file has become shorter than it was.
    bool IsGone() const { return m_gone; }
    // Notes bytes that a read did not bring. result is what the reader gave, success for an end that came too early.
    void NoteUnread(std::uint64_t position, std::uint64_t count, ResultCode result);
    void NoteUnread(const SectorRanges& ranges);

private:
    ScanSource(ScanIdentity identity, OpenedSource opened);

    ScanIdentity m_identity;
    OpenedSource m_opened;
    std::shared_ptr<ScanMarks> m_marks;
    mutable std::mutex m_lock;
    SectorRanges m_unread;
    std::atomic<std::uint64_t> m_unreadSectors = 0;
    std::atomic<bool> m_gone = false;
};
