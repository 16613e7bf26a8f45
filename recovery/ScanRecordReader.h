// Asks a store of records: lists, counts, folder paths, and the search. It writes nothing, and reads through a descriptor
// of its own, so that it can ask while a scan still fills the store: it sees what has been written by then.
#pragma once

#include "platform/FileHandle.h"
#include "recovery/FileRecoveryParse.h"
#include "recovery/StoreIndex.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class ScanRecordStore;

// One thread at a time uses one of these; several can read a store.
class ScanRecordReader
{
public:
    // Takes each record that matches, with its place in the main file, from 1 on.
    using TakeRow = std::function<void(const FileRecord& record, std::uint32_t place)>;
    // Told after each block how far the search has come, in percent; another answer than 0 ends it.
    using SearchProgress = std::function<ResultCode(std::int32_t percent)>;

    // Of a store that could not be opened nothing is found.
    explicit ScanRecordReader(const ScanRecordStore& store);
    ScanRecordReader(const ScanRecordReader&) = delete;
    ScanRecordReader& operator=(const ScanRecordReader&) = delete;

    // The records below a key, sorted, without pictures whose head is gone; key 0 is the lowest key there is. Keys that
    // were looked up and are not there are appended to outMissing.
    [[nodiscard]] ResultCode ListChildren(std::uint64_t key,
                                          FileRecordList& outRecords,
                                          std::vector<std::uint64_t>& outMissing);
    // The files below it, at any depth.
    [[nodiscard]] ResultCode CountChildren(std::uint64_t key,
                                           std::uint32_t& outCount,
                                           std::vector<std::uint64_t>& outMissing);
    // The folders above a record, outermost first, each followed by "\". A chain that breaks gives what was
    // found of it.
    [[nodiscard]] ResultCode GetRecordPath(const FileRecord* record, std::string& outPath);
    // The first folder record with this node among those written; ResultInvalidParameter when there is none.
    [[nodiscard]] ResultCode FindRecordByNode(std::uint32_t nodeId, FileRecord& outRecord);
    // Hands over every file whose extension is a substring of the pattern, in the order of the file. 1 when the record
    // file was read, also when progress stopped it; 0 when it could not be opened.
    std::int32_t SearchRecords(std::string_view extensionPattern,
                               const SearchProgress& progress,
                               const TakeRow& take) const;
    // How many records there are to search; 0 when that is not known.
    std::uint64_t CountRecords() const;

private:
    bool
    NumbersOf(std::uint64_t key, std::vector<std::uint32_t>& outNumbers, bool* outMissing) const;
    ResultCode ReadRecord(std::uint32_t recordNumber, FileRecord& outRecord) const;
    void IndexParents();
    void IndexFolders();
    ResultCode FolderAbove(const FileRecord& record, FileRecord& outFolder, bool* outFound);

    // What a folder's name is known by: the first of its entries.
    struct FolderName
    {
        std::uint32_t recordNumber = 0;
        std::string name;
    };

    std::filesystem::path m_mainPath;
    FileHandle m_mainFile;
    std::shared_ptr<const StoreIndex> m_index;

    // Made when a path is first asked for, made anew when what they were made from has changed.
    static constexpr std::uint64_t NeverMade = UINT64_MAX;
    std::uint64_t m_parentsVersion = NeverMade;
    std::uint64_t m_foldersVersion = NeverMade;
    std::unordered_map<std::uint32_t, std::uint64_t>
        m_parentKeys;                                             // record number to its lowest key
    std::unordered_map<std::uint32_t, FolderName> m_folderNames;  // by folder id
    std::unordered_map<std::uint32_t, std::uint32_t>
        m_foldersByNode;  // node to its place in the main file
};

// The order of every list: files before folders, each by name, bytes compared as unsigned without regard to
// case. Equal names keep their order.
void SortRecords(std::span<FileRecord> records);
