// The restoring side of CFileTypeRecovery: one sequential copy of the sectors that a record claims.
#include "recovery/CopyScope.h"
#include "recovery/RestoreSupport.h"
#include "recovery/carving/FileTypeRecovery.h"

#include <algorithm>

namespace {

constexpr std::uint64_t BlockBytes = 65536;

// A piece is a block. One of which a part is missing brings nothing.
class CarvedReader : public IRecordReader
{
public:
    CarvedReader(SectorSource& source, const FileRecord& record, std::int32_t sectorSize)
        : m_source(source),
          m_sectorSize(static_cast<std::uint64_t>(std::max(sectorSize, 0))),
          m_lba(record.EntrySector)
    {
    }

    CopyManners Manners() const override
    {
        CopyManners manners;
        manners.tellsOpenFailure = true;
        manners.readsToItsEnd = true;
        return manners;
    }

    ResultCode Begin(std::uint64_t wanted, std::size_t* outBufferBytes) override
    {
        *outBufferBytes = BlockBytes;
        m_left = wanted;
        if (m_sectorSize != 0 && m_left % m_sectorSize != 0) {
            m_left += m_sectorSize - m_left % m_sectorSize;
        }
        return ResultSuccess;
    }

    ResultCode
    Next(std::span<std::uint8_t> buffer, std::size_t* outBytes, bool* /*outIsWhole*/) override
    {
        if (m_left == 0) {
            return ResultSuccess;
        }
        if (m_sectorSize == 0 || m_sectorSize > BlockBytes) {
            return ResultInvalidParameter;
        }
        std::int32_t got = 0;
        if (const ResultCode result =
                ReadForCopy(m_source, buffer.data(),
                            static_cast<std::int32_t>(std::min(BlockBytes, m_left) / m_sectorSize),
                            m_lba, static_cast<std::int32_t>(m_sectorSize), &got)) {
            return result;
        }
        if (got <= 0) {
            return ResultReadFault;
        }
        const auto sectors = static_cast<std::uint64_t>(got);
        m_lba += sectors;
        m_left -= sectors * m_sectorSize;
        *outBytes = static_cast<std::size_t>(sectors * m_sectorSize);
        return ResultSuccess;
    }

    bool FindPlaces(std::uint64_t wanted, BytePlaces& outPlaces) override
    {
        return m_sectorSize != 0 &&
               AddPlace(outPlaces, m_lba, wanted / m_sectorSize + (wanted % m_sectorSize != 0),
                        static_cast<std::uint32_t>(m_sectorSize));
    }

private:
    SectorSource& m_source;
    std::uint64_t m_sectorSize;
    std::uint64_t m_lba;
    std::uint64_t m_left = 0;  // bytes, whole sectors
};

}  // namespace

std::unique_ptr<IRecordReader> CFileTypeRecovery::MakeReader(const FileRecord& record)
{
    return std::make_unique<CarvedReader>(m_source, record, m_sectorSize);
}

ResultCode CFileTypeRecovery::RestoreRecord(const FileRecord* record,
                                            const std::filesystem::path& destPath,
                                            std::uint32_t /*baseDepth*/)
{
    if (const ResultCode made = MakeFolderOf(destPath)) {
        return made;
    }
    return WriteCarvedFile(record, destPath);
}

ResultCode CFileTypeRecovery::WriteCarvedFile(const FileRecord* record,
                                              const std::filesystem::path& destPath)
{
    if (record != nullptr) {
        return RestoreFile(*record, destPath);
    }
    if (m_fileCallback != nullptr) {
        (void)m_fileCallback(m_callbackContext, 100, 100, ResultInvalidParameter, destPath);
    }
    return ResultInvalidParameter;
}
