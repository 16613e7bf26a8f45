// The restoring side of CFileTypeRecovery: one sequential copy of the sectors that a record claims.
#include "platform/Folders.h"
#include "recovery/RestoreSupport.h"
#include "recovery/carving/FileTypeRecovery.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr std::uint64_t BlockBytes = 65536;

// Reads a carved file block by block.
class CarvedReader
{
public:
    CarvedReader(SectorSource& from,
                 const FileRecord& record,
                 std::int32_t size,
                 std::uint64_t wanted)
        : m_source(from),
          m_sectorSize(static_cast<std::uint64_t>(std::max(size, 0))),
          m_lba(record.EntrySector),
          m_toRead(wanted)
    {
        if (m_sectorSize != 0 && m_toRead % m_sectorSize != 0) {
            m_toRead += m_sectorSize - m_toRead % m_sectorSize;
        }
    }

    bool AtEnd() const { return m_toRead == 0; }

    // The next block; empty with the reason in outResult. A block of which a part is missing brings nothing.
    ByteView Next(ResultCode& outResult)
    {
        if (m_sectorSize == 0 || m_sectorSize > BlockBytes) {
            outResult = ResultInvalidParameter;
            return {};
        }
        const auto count = static_cast<std::int32_t>(std::min(BlockBytes, m_toRead) / m_sectorSize);
        std::int32_t got = 0;
        outResult = m_source.ReadSectors(m_block.data(), count, m_lba,
                                         static_cast<std::int32_t>(m_sectorSize), &got);
        if (outResult != ResultSuccess) {
            return {};
        }
        if (got <= 0) {
            outResult = ResultReadFault;
            return {};
        }
        const auto sectors = static_cast<std::uint64_t>(got);
        m_lba += sectors;
        m_toRead -= sectors * m_sectorSize;
        return {m_block.data(), sectors * m_sectorSize};
    }

private:
    SectorSource& m_source;
    std::uint64_t m_sectorSize;
    std::uint64_t m_lba;
    std::uint64_t m_toRead;  // bytes, whole sectors
    std::array<std::uint8_t, BlockBytes> m_block{};
};

std::int32_t Percent(std::uint64_t done, std::uint64_t total)
{
    // A size of half of all numbers is hostile; the figure may be wrong then, the copy is not.
    return static_cast<std::int32_t>(done * 100 / total);
}

}  // namespace

ResultCode CFileTypeRecovery::RestoreRecord(const FileRecord* record,
                                            const std::filesystem::path& destPath,
                                            std::uint32_t)
{
    if (const ResultCode made = MakeFolderOf(destPath)) {
        return made;
    }
    return WriteCarvedFile(record, destPath);
}

ResultCode CFileTypeRecovery::CopyToFile(const FileRecord& record,
                                         const std::filesystem::path& destPath)
{
    OutputFile file;
    if (const ResultCode opened = file.Open(destPath)) {
        return opened;
    }
    const std::uint64_t size = record.FileSize;
    std::uint64_t toWrite = size;
    CarvedReader reader(m_source, record, m_sectorSize, size);
    while (!reader.AtEnd()) {
        ResultCode result = ResultSuccess;
        const ByteView block = reader.Next(result);
        if (result != ResultSuccess) {
            return result;
        }
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(block.Size(), toWrite));
        if (const ResultCode written = file.Write(block.Data(), count)) {
            return written;
        }
        toWrite -= count;
        if (m_fileCallback != nullptr) {
            result = m_fileCallback(m_callbackContext, Percent(size - toWrite, size), 100,
                                    ResultSuccess, destPath);
        }
        if (result != ResultSuccess) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode CFileTypeRecovery::WriteCarvedFile(const FileRecord* record,
                                              const std::filesystem::path& destPath)
{
    const ResultCode result =
        record != nullptr ? CopyToFile(*record, destPath) : ResultInvalidParameter;
    // An error is told to the callback; a cancel came from there.
    if (result > ResultSuccess && m_fileCallback != nullptr) {
        (void)m_fileCallback(m_callbackContext, 100, 100, result, destPath);
    }
    return result;
}

ResultCode CFileTypeRecovery::PreviewToFile(const FileRecord& record,
                                            std::filesystem::path& outPath,
                                            PreviewProgressCallback progressFn,
                                            void* context)
{
    OutputFile file;
    if (const ResultCode opened = OpenPreviewFile(record.NameText(), outPath, file)) {
        return opened;
    }
    const std::uint64_t size = record.FileSize;
    std::uint64_t toWrite = size;
    CarvedReader reader(m_source, record, m_sectorSize, size);
    ResultCode result = ResultSuccess;
    while (result == ResultSuccess && !reader.AtEnd()) {
        const ByteView block = reader.Next(result);
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(block.Size(), toWrite));
        if (result == ResultSuccess) {
            result = file.Write(block.Data(), count);
        }
        if (result == ResultSuccess) {
            toWrite -= count;
            result = progressFn != nullptr
                         ? progressFn(context, Percent(size - toWrite, size), ResultSuccess)
                         : ResultSuccess;
        }
    }
    file.Close();
    if (result != ResultSuccess) {
        (void)RemoveFile(outPath);  // a part of a picture is no preview
    }
    return result;
}

ResultCode CFileTypeRecovery::PreviewToBuffer(const FileRecord& record,
                                              std::uint8_t* buffer,
                                              std::uint32_t capacity,
                                              std::uint32_t& outCopied,
                                              PreviewProgressCallback progressFn,
                                              void* context)
{
    const std::uint64_t size = record.FileSize;
    const auto toWrite = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, capacity));
    CarvedReader reader(m_source, record, m_sectorSize, toWrite);
    while (!reader.AtEnd()) {
        ResultCode result = ResultSuccess;
        const ByteView block = reader.Next(result);
        if (result != ResultSuccess) {
            return result;
        }
        const std::size_t count = std::min<std::size_t>(block.Size(), toWrite - outCopied);
        if (count == 0) {
            return ResultSuccess;
        }
        std::memcpy(buffer + outCopied, block.Data(), count);
        outCopied += static_cast<std::uint32_t>(count);
        if (progressFn != nullptr) {
            result = progressFn(context, Percent(outCopied, toWrite), ResultSuccess);
        }
        if (result != ResultSuccess) {
            return result;
        }
    }
    return ResultSuccess;
}

ResultCode CFileTypeRecovery::ReadRecordData(const FileRecord* record,
                                             std::filesystem::path& tempPathInOut,
                                             std::uint8_t* buffer,
                                             std::uint32_t& inOutSize,
                                             PreviewProgressCallback progressFn,
                                             void* context)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    std::uint32_t copied = 0;
    ResultCode result = ResultSuccess;
    if (PreviewNeedsFile(record->NameText())) {
        result = PreviewToFile(*record, tempPathInOut, progressFn, context);
    } else {
        const std::uint32_t capacity = buffer != nullptr ? inOutSize : 0;
        result = PreviewToBuffer(*record, buffer, capacity, copied, progressFn, context);
    }
    if (result > ResultSuccess && progressFn != nullptr) {
        (void)progressFn(context, 100, result);
    }
    inOutSize = copied;
    return result;
}
