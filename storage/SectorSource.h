// The one class through which the engines read a target after opening it: whole sectors by LBA, from a drive
// or an image file alike. Reads only, caches nothing, retries nothing.
#pragma once

#include "storage/ScanSource.h"

#include <cstdint>
#include <filesystem>
#include <memory>

// A value member of each engine. Not thread-safe.
class SectorSource
{
public:
    // Reads through a source that is open already, whose range does not bound it. totalSectors counts the drive's own
    // sectors, or the image's of 512 bytes.
    void Open(std::shared_ptr<ScanSource> source);
    // The same over a source of its own.
    [[nodiscard]] ResultCode OpenDrive(std::uint32_t diskNumber);
    [[nodiscard]] ResultCode OpenImage(const std::filesystem::path& filePath);

    // Reads sectorCount sectors of sectorSize bytes from absolute sector lba into buffer.
    // ResultInvalidParameter (87) with nothing touched when the end, counted in the caller's sectors, lies
    // past totalSectors. ResultReadFault (30) when the reading broke off; *outSectorsRead then tells the whole
    // sectors that did arrive.
    [[nodiscard]] ResultCode ReadSectors(std::uint8_t* buffer,
                                         std::int32_t sectorCount,
                                         std::uint64_t lba,
                                         std::int32_t sectorSize,
                                         std::int32_t* outSectorsRead);

    // The same, but what the source is known to miss comes as zeros, and what lies after it comes too. ResultReadFault, with
    // nothing read, when all of it is missing.
    [[nodiscard]] ResultCode ReadAroundMissing(std::uint8_t* buffer,
                                               std::int32_t sectorCount,
                                               std::uint64_t lba,
                                               std::int32_t sectorSize,
                                               std::int32_t* outSectorsRead);
    // A part of these sectors is known to be missing.
    bool Misses(std::uint64_t lba, std::uint64_t sectorCount) const;

    bool IsOpen() const { return m_source != nullptr; }
    // Another number for every opening in the process, 0 until opened: tells what was cached of one from the rest.
    std::uint64_t OpenNumber() const { return m_openNumber; }

    std::uint64_t totalSectors = 0;  // size of the whole drive or file; 0 until opened
    std::uint64_t totalBytes = 0;    // the same in bytes, a partial last sector included

private:
    void NoteWhatElseFails(std::uint64_t position, std::uint64_t count);

    std::shared_ptr<ScanSource> m_source;
    std::uint64_t m_openNumber = 0;
};
