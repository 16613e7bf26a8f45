// Copies sectors of a disk one by one into a plain file: no header, the raw bytes in order, so that the file can be scanned
// like the disk.
#pragma once

#include "storage/ByteReader.h"

#include <cstdint>
#include <filesystem>
#include <vector>

// secondsLeft is -1 when it is not known yet. 0 goes on, anything else ends the copy and becomes its result.
using ImageProgressCallback = ResultCode (*)(void* context,
                                             std::int32_t percent,
                                             std::uint64_t sectorsDone,
                                             std::uint64_t sectorsTotal,
                                             std::int32_t secondsLeft);

class RawDiskCopier
{
public:
    // Copies a range of a disk of the DriveRegistry, the whole disk when sectorCount is 0. What stands in an existing file
    // is written over from its start; a longer file keeps its tail. 0, a result code, ResultReadFault at the first sector
    // that cannot be read, or what the callback gave; the file keeps what was written until then.
    [[nodiscard]] ResultCode Copy(std::uint32_t diskNumber,
                                  std::uint64_t startSector,
                                  std::uint64_t sectorCount,
                                  const std::filesystem::path& outputPath,
                                  ImageProgressCallback callback,
                                  void* context);

    std::uint32_t SectorSize = 512;
    std::uint64_t StartSector = 0;
    std::uint64_t SectorCount = 0;
    ImageProgressCallback Callback = nullptr;
    void* Context = nullptr;

    // How far it came.
    bool SourceOpened = false;
    std::uint64_t WrittenSectors = 0;
    std::uint64_t FailedSector = 0;  // of the disk; after ResultReadFault

private:
    [[nodiscard]] ResultCode Open(std::uint32_t diskNumber,
                                  const std::filesystem::path& outputPath);
    [[nodiscard]] ResultCode Run();
    [[nodiscard]] ResultCode CopyPiece(std::uint64_t position, std::size_t size);
    std::uint64_t FirstBadSector(std::uint64_t sector, std::uint64_t endSector);
    void Close();

    OpenedSource m_source;
    FileHandle m_target;
    std::vector<std::uint8_t> m_buffer;
};
