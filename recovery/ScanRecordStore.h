// One engine's found files on disk: the main record file, the index from folder to records, and the folders'
// names. Records never stay in memory; they survive the scan. See docs/formats.md for the three files. This is the side
// that writes; ScanRecordReader asks.
#pragma once

#include "platform/FileHandle.h"
#include "recovery/StoreIndex.h"
#include "storage/ScanMarks.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Filled during a scan by its thread alone. Readers on any thread see what has been written.
class ScanRecordStore
{
public:
    static constexpr std::size_t BufferRecords = 200;

    ScanRecordStore() = default;
    ScanRecordStore(const ScanRecordStore&) = delete;
    ScanRecordStore& operator=(const ScanRecordStore&) = delete;
    // Flushes and closes; the files stay.
    ~ScanRecordStore();

    // The name that a new scan's store gets: prefix, the target's first LBA and the local time.
    static std::string MakeName(std::string_view prefix, std::uint64_t startLba);

    // Opens or creates the three files in a log folder, which is made when it is not there, and loads the two indexes.
    // A store that could not be opened still takes records, and loses them.
    [[nodiscard]] ResultCode OpenStore(const std::filesystem::path& folder,
                                       std::string_view logName);

    // The same, cut to its first records, which all lie under one key, with the count going on after them and no folders:
    // what a scan wrote before it was killed.
    [[nodiscard]] ResultCode OpenStoreCut(const std::filesystem::path& folder,
                                          std::string_view logName,
                                          std::uint32_t records,
                                          std::uint64_t key);

    // A zeroed record in the write buffer, counted; valid until the next call. Writes the buffer first when it is
    // full; a failed write loses those records and is not reported.
    FileRecord& ReserveRecord();
    // Records reserved since this object was made, which is the number of the record just reserved.
    std::uint32_t GetRecordCount() const { return m_recordCount; }
    // Enters a record under the folder parentId at depth levels below the root. Folders give their name, files
    // none.
    void LinkRecord(std::uint32_t parentId, std::uint32_t depth, std::uint32_t recordNumber);
    void LinkFolder(std::uint32_t parentId,
                    std::uint32_t depth,
                    std::uint32_t recordNumber,
                    std::uint32_t nodeId,
                    std::string_view name);
    // A folder that was asked for and is not there gets an empty list, which the next flush writes.
    void EnterEmptyKeys(std::span<const std::uint64_t> keys);
    // Where files are found is marked there from now on.
    void MarkFilesOn(std::shared_ptr<ScanMarks> marks, std::uint32_t sectorSize);
    // Writes the buffer, then both index files. Can run any number of times.
    ResultCode FlushStore();
    // Writes the buffer alone, and waits until the records are on the disk.
    [[nodiscard]] ResultCode SyncRecords();
    // Records that could not be written, and why; also an index that could not: then 0 may be lost.
    std::uint64_t LostRecords() const { return m_lostRecords; }
    ResultCode WriteFault() const { return m_writeFault; }

    // For readers: where the records are, and the indexes.
    const std::filesystem::path& MainPath() const { return m_mainPath; }
    std::shared_ptr<const StoreIndex> Index() const { return m_index; }

private:
    void EnterNumber(std::uint64_t key, std::uint32_t recordNumber);
    [[nodiscard]] ResultCode OpenFiles(const std::filesystem::path& folder,
                                       std::string_view logName);
    void MarkLast() const;
    ResultCode WriteBuffer();
    ResultCode NoteFault(ResultCode result);
    ResultCode WriteRelation();
    ResultCode WriteDirInfo();
    void LoadRelation();
    void LoadDirInfo();

    FileHandle m_mainFile;
    FileHandle m_relationFile;
    FileHandle m_dirInfoFile;
    std::filesystem::path m_mainPath;
    std::vector<FileRecord> m_buffer = std::vector<FileRecord>(BufferRecords);
    std::size_t m_bufferUsed = 0;        // in records
    std::uint64_t m_appendPosition = 0;  // in the main file, bytes
    std::uint32_t m_recordCount = 0;
    std::shared_ptr<StoreIndex> m_index = std::make_shared<StoreIndex>();
    bool m_relationChanged = false;  // since it was last written
    bool m_dirInfoChanged = false;
    std::shared_ptr<ScanMarks> m_marks;  // may be null
    std::uint32_t m_sectorSize = 0;
    std::uint64_t m_lostRecords = 0;
    ResultCode m_writeFault = ResultSuccess;  // the first
};
