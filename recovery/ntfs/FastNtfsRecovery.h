// The quick engine for NTFS: reads the master file table through its own run list, records every file whose record is
// marked deleted, and the folders above those files. A volume whose table is gone yields nothing here.
#pragma once

#include "recovery/StoreEngine.h"
#include "recovery/metadata/NtfsVolume.h"
#include "recovery/ntfs/NtfsAncestors.h"
#include "recovery/ntfs/NtfsClusterMap.h"
#include "recovery/ntfs/NtfsFileNames.h"
#include "recovery/ntfs/NtfsReaders.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

// Also the deep pass's first stage, which takes the free ranges from it.
class CFastNtfsRecovery : public CStoreEngine
{
public:
    using CStoreEngine::CStoreEngine;

    // Fails where no NTFS boot sector stands, and the engine stays closed.
    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;
    ResultCode Scan(const std::string* logName) override;
    std::int32_t NextFreeRange(std::uint64_t& inOutSector, std::uint64_t& outLength) override;
    // 0 without a store too.
    ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) override;
    ResultCode BuildUsedClusterMap() override;

    // Where a record's first data is, in sectors of that size, whatever the volume's own is; none when its record tells of no
    // runs.
    std::optional<std::uint64_t> FirstDataSector(const FileRecord& record,
                                                 std::uint32_t sectorBytes);

protected:
    bool IsOpen() const override { return m_isOpen; }
    ResultCode KeyOf(const FileRecord* parentRecord,
                     std::uint32_t depth,
                     KeyUse use,
                     std::optional<std::uint64_t>* outKey) const override;
    std::unique_ptr<IRecordReader> MakeReader(const FileRecord& record) override;

private:
    // A record being looked at: the bytes from its start to the end of the buffer that it was read into.
    struct RecordInHand
    {
        std::span<std::uint8_t> bytes;
        std::uint64_t sector = 0;  // where it was read; of the folder pass 0
        bool folderPass = false;
        std::uint32_t wantedNumber = 0;  // of the folder pass
    };
    struct ScanClock;

    // FastNtfsScan.cpp
    [[nodiscard]] ResultCode ScanMft();
    [[nodiscard]] ResultCode ScanRun(const NtfsRun& run, std::uint64_t lba, ScanClock& clock);
    [[nodiscard]] ResultCode ScanMftChunk(std::uint64_t firstSector, std::uint64_t sectors);
    void ScanFolders();
    ResultCode ProcessRecord(const RecordInHand& inHand);
    bool TakeFileName(const RecordInHand& inHand, ByteView attribute, FileRecord*& current);
    FileRecord& MakeRecord(const RecordInHand& inHand, ByteView attribute);
    bool CheckFileHead(const FileRecord& record, const RecordInHand& inHand);
    bool CheckFirstSector(const FileRecord& record, const RunList& runs);

    NtfsVolume m_volume;
    NtfsRecordOrigin m_origin;
    bool m_isOpen = false;
    NtfsReaders m_readers{m_source, m_volume};
    NtfsAncestors m_ancestors{m_readers};
    NtfsClusterMap m_usedClusters;
    std::vector<std::uint8_t> m_chunkBuffer;
};
