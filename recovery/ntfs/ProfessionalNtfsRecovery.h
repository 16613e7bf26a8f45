// The NTFS analysis of the deep pass: finds files from FILE records wherever they lie, when the master file table cannot
// be walked. Live and deleted files are treated alike; folders are reached from the files inside them.
#pragma once

#include "recovery/FolderChain.h"
#include "recovery/StoreEngine.h"
#include "recovery/WorkReport.h"
#include "recovery/ntfs/NtfsFileNames.h"
#include "recovery/ntfs/NtfsLostTables.h"
#include "recovery/ntfs/NtfsReaders.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

// OpenRecordStore, any number of AddFileRecord, FinishAnalysis once; then only the store counts. One thread at a time,
// that of the deep pass.
class CProfessionalNtfsRecovery : public CStoreEngine
{
public:
    using CStoreEngine::CStoreEngine;

    // The result is that of reading the target's first sectors.
    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;

    // Opens the store of that name, or a new one for an empty name.
    [[nodiscard]] ResultCode OpenRecordStore(std::string_view logName);
    // The same with nothing in it: what it had is shown again.
    [[nodiscard]] ResultCode OpenEmptiedStore(std::string_view logName);
    // A record found at lba. It stands at the buffer's start and is repaired in place; a walk through it may stray up to
    // the buffer's end. 0, ResultNoFileRecord, or ResultInvalidParameter when its offsets are out of bounds.
    ResultCode AddFileRecord(std::span<std::uint8_t> buffer, std::uint64_t lba);
    // The end of the pass: records the folders that files need. Ends at the first that cannot be read, or when report,
    // asked before each, answers other than 0.
    ResultCode FinishAnalysis(const WorkReport& report);
    // The sector of a record's first data; none when its record tells of no runs.
    std::optional<std::uint64_t> FirstDataSector(const FileRecord& record);

protected:
    bool IsOpen() const override { return m_isOpen; }
    // Unlike the listing, the count takes the root for a parent without a number.
    ResultCode KeyOf(const FileRecord* parentRecord,
                     std::uint32_t depth,
                     KeyUse use,
                     std::optional<std::uint64_t>* outKey) const override;
    std::unique_ptr<IRecordReader> MakeReader(const FileRecord& record) override;

private:
    // A record being taken apart.
    struct RecordInHand
    {
        std::span<std::uint8_t> bytes;  // from the record to the buffer's end
        std::uint64_t lba = 0;
        bool folderPass = false;
        std::uint32_t wantedNumber = 0;  // of the folder pass
    };
    // A folder to be recorded, with what was known of its volume when it was first needed.
    struct FolderWork
    {
        std::uint32_t recordNumber = 0;
        NtfsLostTable table;
    };
    // What a record on disk says of the folder above it.
    struct FolderHead
    {
        bool isFolder = false;  // readable, a folder, and within bounds
        std::uint32_t number = 0;
        bool hasParent = false;
        std::uint32_t parent = 0;
    };

    [[nodiscard]] ResultCode ReadBoot();
    void ForgetPass();
    [[nodiscard]] ResultCode ReadRecordAt(std::uint64_t lba, RecordBuffer& outBuffer);
    [[nodiscard]] ResultCode ReadRepairedRecord(std::uint64_t lba, RecordBuffer& outBuffer);
    [[nodiscard]] ResultCode ReadRunsAt(std::uint64_t lba, RunList& outRuns);
    [[nodiscard]] ResultCode ReadRecordRuns(std::uint64_t lba, RunList& outRuns);
    [[nodiscard]] ResultCode ReadResidentData(std::uint64_t lba, std::span<std::uint8_t> buffer);
    // ProfessionalNtfsAnalysis.cpp
    ResultCode ProcessRecord(const RecordInHand& inHand);
    bool TakeFileName(const RecordInHand& inHand, ByteView attribute, FileRecord*& current);
    void TakeSystemName(const RecordInHand& inHand, ByteView attribute);
    FileRecord& MakeRecord(const RecordInHand& inHand, ByteView attribute);
    void EstimateClusterSize(ByteView record);
    std::uint32_t ResolveAncestors(std::uint32_t recordNumber, const NtfsLostTable& table);
    const FolderHead& HeadAt(std::uint64_t lba);
    bool CheckFileHead(const FileRecord& record);
    bool CheckFirstSector(const FileRecord& record, const RunList& runs);

    bool m_isOpen = false;
    std::uint64_t m_startLba = 0;
    std::uint32_t m_bytesPerSector = 512;
    std::uint32_t m_recordSize = 1024;
    std::uint32_t m_sectorsPerRecord = 2;
    std::uint32_t m_sectorsPerCluster = 8;  // the running estimate
    NtfsRecordOrigin m_origin{0, EngineKindProfessionalNtfs};
    NtfsRecordCodec m_codec;
    NtfsLostTables m_mfts;
    std::vector<FolderWork> m_folderWorkList;  // no two with the same number, in order of first use
    std::unordered_set<std::uint32_t> m_listed;
    std::unordered_map<std::uint64_t, FolderHead> m_heads;  // by LBA
    // Depths of folders, by the table that they were looked up in.
    std::unordered_map<std::uint64_t, KnownDepths> m_depths;
};
