// What a scan reads, opened once and handed to all that read: an image, a range of an image, or a range of a drive.
#pragma once

#include "storage/ByteReader.h"

#include <cstdint>
#include <filesystem>
#include <memory>

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
// reads. It never changes after its opening, and closes when the last one lets go.
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
    // The first count bytes of the range, or the failure: ResultShortRead when it has less.
    [[nodiscard]] ResultCode ReadStart(std::uint8_t* buffer, std::size_t count) const;

private:
    ScanSource(ScanIdentity identity, OpenedSource opened);

    ScanIdentity m_identity;
    OpenedSource m_opened;
};
