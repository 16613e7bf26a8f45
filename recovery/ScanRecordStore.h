// One engine's found files on disk: the main record file, the index from folder to records, and the folders'
// names. Records never stay in memory; they survive the scan. See docs/formats.md for the three files.
#pragma once

#include "platform/FileHandle.h"
#include "recovery/FileRecoveryParse.h"

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Filled during a scan, then queried: after the first query no more records may be added. Not thread-safe.
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

    // Opens or creates the three files in the current log folder and loads the two indexes. A store that could
    // not be opened still takes records, and loses them.
    [[nodiscard]] ResultCode OpenStore(std::string_view logName);

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
    // Writes the buffer, then both index files. Can run any number of times.
    ResultCode FlushStore();

    static constexpr std::uint64_t MakeKey(std::uint32_t depth, std::uint32_t nodeId)
    {
        return std::uint64_t{depth} << 32 | nodeId;
    }

    // The queries. Those that the engines pass on after a flush; key 0 is the lowest key there is.
    [[nodiscard]] ResultCode ListChildren(std::uint64_t key, FileRecordList& outRecords);
    [[nodiscard]] ResultCode CountChildren(std::uint64_t key, std::uint32_t& outCount);
    // The folders above a record, outermost first, each followed by "\". A chain that breaks gives what was
    // found of it. ResultInvalidParameter for a null record.
    [[nodiscard]] ResultCode GetRecordPath(const FileRecord* record, std::string& outPath);
    // The first folder record with this node among those written; ResultInvalidParameter when there is none.
    [[nodiscard]] ResultCode FindRecordByNode(std::uint32_t nodeId, FileRecord& outRecord);
    // As IFileRecoveryParse::SearchRecords. Flushes by itself.
    std::int32_t SearchRecords(std::string_view extensionPattern, FileRecordList& outRecords);
    void SetSearchCallback(SearchProgressCallback callback, void* context);

private:
    using Relation = std::map<std::uint64_t, std::vector<std::uint32_t>>;

    ResultCode WriteBuffer();
    ResultCode WriteRelation();
    ResultCode WriteDirInfo();
    void LoadRelation();
    void LoadDirInfo();
    const std::vector<std::uint32_t>* FindList(std::uint64_t key);
    ResultCode ReadRecord(std::uint32_t recordNumber, FileRecord& outRecord);
    void IndexParents();
    void IndexFolders();
    ResultCode FolderAbove(const FileRecord& record, FileRecord& outFolder, bool* outFound);

    FileHandle m_mainFile;
    FileHandle m_relationFile;
    FileHandle m_dirInfoFile;
    std::filesystem::path m_mainPath;
    std::vector<FileRecord> m_buffer = std::vector<FileRecord>(BufferRecords);
    std::size_t m_bufferUsed = 0;        // in records
    std::uint64_t m_appendPosition = 0;  // in the main file, bytes
    std::uint32_t m_recordCount = 0;
    Relation m_relation;
    std::vector<DirInfoRecord> m_dirInfo;
    bool m_relationChanged = false;  // since it was last written
    bool m_dirInfoChanged = false;
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;

    // Made when a path is first asked for, dropped when what they were made from changes.
    std::unordered_map<std::uint32_t, std::uint64_t>
        m_parentKeys;  // record number to its lowest key
    std::unordered_map<std::uint32_t, std::size_t>
        m_dirInfoByFolder;  // folder id to its first entry
    std::unordered_map<std::uint32_t, std::uint32_t>
        m_foldersByNode;  // node to its place in the main file
    bool m_parentsIndexed = false;
    bool m_foldersIndexed = false;
};

// The order of every list: files before folders, each by name, bytes compared as unsigned without regard to
// case. Equal names keep their order.
void SortRecords(FileRecordList& records);
