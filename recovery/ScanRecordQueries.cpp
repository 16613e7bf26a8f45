// The queries of ScanRecordStore: listing, counting and searching records, and a record's folder path.
#include "platform/Text.h"
#include "recovery/FileTypeCatalogue.h"
#include "recovery/ScanRecordStore.h"

#include <algorithm>
#include <unordered_set>

namespace {

constexpr std::size_t LongestPattern = 4095;

// A picture whose first sector is gone is of no use to anyone: it is neither listed nor found.
bool IsHiddenPicture(const FileRecord& record)
{
    std::string extension;
    return record.HeadIntact == 0 && ExtensionOf(record.NameText(), extension) == ResultSuccess &&
           InFamily(FamilyPhoto, LowerAscii(extension));
}

bool MatchesPattern(const FileRecord& record, std::string_view pattern)
{
    if (record.IsFolder != 0) {
        return false;
    }
    if (pattern == AllFilesPattern) {
        return true;
    }
    std::string extension;
    if (ExtensionOf(record.NameText(), extension) != ResultSuccess || IsHiddenPicture(record)) {
        return false;
    }
    return pattern.find(LowerAscii(extension)) != std::string_view::npos;
}

// What a record is sorted by, made once: records are large and lower-casing in a comparison is dear.
struct SortKey
{
    bool isFolder;
    std::string name;
    std::size_t place;
};

}  // namespace

void SortRecords(FileRecordList& records)
{
    if (records.size() < 2) {
        return;
    }
    std::vector<SortKey> keys;
    keys.reserve(records.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        keys.push_back({records[i].IsFolder != 0, LowerAscii(records[i].NameText()), i});
    }
    // std::string compares its bytes as unsigned, which is the order wanted.
    std::sort(keys.begin(), keys.end(), [](const SortKey& left, const SortKey& right) {
        if (left.isFolder != right.isFolder) {
            return right.isFolder;
        }
        const int order = left.name.compare(right.name);
        return order != 0 ? order < 0 : left.place < right.place;
    });
    FileRecordList sorted;
    sorted.reserve(records.size());
    for (const SortKey& key : keys) {
        sorted.push_back(records[key.place]);
    }
    records = std::move(sorted);
}

ResultCode ScanRecordStore::ReadRecord(std::uint32_t recordNumber, FileRecord& outRecord)
{
    if (recordNumber == 0) {
        return ResultNegativeSeek;
    }
    std::size_t got = 0;
    const std::uint64_t position = (std::uint64_t{recordNumber} - 1) * sizeof(FileRecord);
    if (const ResultCode result = m_mainFile.ReadAt(position, &outRecord, sizeof outRecord, &got)) {
        return result;
    }
    return got == sizeof outRecord ? ResultSuccess : ResultReadFault;
}

// The list of a key; the lowest key's for 0. A key that is not there is entered with an empty list, which the
// next flush writes.
const std::vector<std::uint32_t>* ScanRecordStore::FindList(std::uint64_t key)
{
    if (key == 0) {
        return m_relation.empty() ? nullptr : &m_relation.begin()->second;
    }
    const auto [entry, isNew] = m_relation.try_emplace(key);
    m_relationChanged = m_relationChanged || isNew;
    return &entry->second;
}

ResultCode ScanRecordStore::ListChildren(std::uint64_t key, FileRecordList& outRecords)
{
    const std::vector<std::uint32_t>* numbers = FindList(key);
    if (numbers == nullptr) {
        return ResultSuccess;
    }
    ResultCode result = ResultSuccess;
    for (const std::uint32_t number : *numbers) {
        FileRecord record;
        result = ReadRecord(number, record);
        if (result != ResultSuccess) {
            break;
        }
        if (!IsHiddenPicture(record)) {
            outRecords.push_back(record);
        }
    }
    SortRecords(outRecords);
    return result;
}

ResultCode ScanRecordStore::CountChildren(std::uint64_t key, std::uint32_t& outCount)
{
    outCount = 0;
    ResultCode result = ResultSuccess;
    // Keys by depth, each with how often it was reached: two folder records may share a node, and walking a
    // shared tree once for each would double at every level.
    std::map<std::uint64_t, std::uint32_t> waiting = {{key, 1}};
    while (!waiting.empty()) {
        const auto [current, times] = *waiting.begin();
        waiting.erase(waiting.begin());
        const std::vector<std::uint32_t>* numbers = FindList(current);
        const std::uint64_t childDepth = (current >> 32) + 1;
        for (std::size_t i = 0; numbers != nullptr && i < numbers->size(); ++i) {
            FileRecord record;
            if (const ResultCode read = ReadRecord((*numbers)[i], record)) {
                result = read;
                break;
            }
            if (record.IsFolder == 0) {
                outCount += times;
            } else if (childDepth <= UINT32_MAX) {
                waiting[childDepth << 32 | record.NodeId] += times;
            }
        }
    }
    return result;
}

void ScanRecordStore::IndexParents()
{
    if (m_parentsIndexed) {
        return;
    }
    m_parentKeys.clear();
    for (const auto& [key, numbers] : m_relation) {
        for (const std::uint32_t number : numbers) {
            m_parentKeys.try_emplace(number, key);  // the lowest key stays
        }
    }
    m_dirInfoByFolder.clear();
    for (std::size_t i = 0; i < m_dirInfo.size(); ++i) {
        m_dirInfoByFolder.try_emplace(std::uint32_t{m_dirInfo[i].FolderId},
                                      i);  // the first entry stays
    }
    m_parentsIndexed = true;
}

void ScanRecordStore::IndexFolders()
{
    if (m_foldersIndexed) {
        return;
    }
    m_foldersByNode.clear();
    std::vector<FileRecord> block(BufferRecords);
    std::uint64_t position = 0;
    std::size_t got = 0;
    do {
        if (m_mainFile.ReadAt(position, block.data(), BufferRecords * sizeof(FileRecord), &got) !=
            ResultSuccess) {
            break;
        }
        const std::size_t records = got / sizeof(FileRecord);
        for (std::size_t i = 0; i < records; ++i) {
            if (block[i].IsFolder != 0) {
                const std::uint64_t place = position / sizeof(FileRecord) + i + 1;
                m_foldersByNode.try_emplace(std::uint32_t{block[i].NodeId},
                                            static_cast<std::uint32_t>(place));
            }
        }
        position += records * sizeof(FileRecord);
    } while (got >= sizeof(FileRecord));
    m_foldersIndexed = true;
}

ResultCode ScanRecordStore::FindRecordByNode(std::uint32_t nodeId, FileRecord& outRecord)
{
    IndexFolders();
    const auto found = m_foldersByNode.find(nodeId);
    return found != m_foldersByNode.end() ? ReadRecord(found->second, outRecord)
                                          : ResultInvalidParameter;
}

// The folder that a record is linked under: *outFound is false at the root. Of a folder known by name alone only
// Name and RecordNumber are set.
ResultCode
ScanRecordStore::FolderAbove(const FileRecord& record, FileRecord& outFolder, bool* outFound)
{
    *outFound = false;
    const auto key = m_parentKeys.find(std::uint32_t{record.RecordNumber});
    // The lowest key stands for the root.
    if (key == m_parentKeys.end() || key->second == m_relation.begin()->first) {
        return ResultSuccess;
    }
    const auto folderId = static_cast<std::uint32_t>(key->second);
    const auto known = m_dirInfoByFolder.find(folderId);
    if (known == m_dirInfoByFolder.end()) {
        const ResultCode result = FindRecordByNode(folderId, outFolder);
        *outFound = result == ResultSuccess;
        return result;
    }
    outFolder = FileRecord();
    outFolder.RecordNumber = m_dirInfo[known->second].RecordNumber;
    outFolder.SetName(m_dirInfo[known->second].NameText());
    *outFound = true;
    return ResultSuccess;
}

ResultCode ScanRecordStore::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    IndexParents();
    std::vector<std::string> names;  // nearest folder first
    // Folders can contain each other on a damaged disk: the chain ends when a number comes back.
    std::unordered_set<std::uint32_t> passed = {std::uint32_t{record->RecordNumber}};
    FileRecord current = *record;
    FileRecord folder;
    bool found = false;
    while (FolderAbove(current, folder, &found) == ResultSuccess && found &&
           passed.insert(std::uint32_t{folder.RecordNumber}).second) {
        names.emplace_back(folder.NameText());
        current = folder;
    }
    outPath.clear();
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
        outPath += *name;
        outPath += '\\';
    }
    return ResultSuccess;
}

std::int32_t ScanRecordStore::SearchRecords(std::string_view extensionPattern,
                                            FileRecordList& outRecords)
{
    const std::string_view pattern = extensionPattern.substr(0, LongestPattern);
    (void)FlushStore();  // what could not be written is not found
    FileHandle file;
    std::uint64_t length = 0;
    if (file.OpenForReading(m_mainPath) != ResultSuccess || file.Size(&length) != ResultSuccess) {
        SortRecords(outRecords);
        return 0;
    }
    std::vector<FileRecord> block(BufferRecords);
    for (std::uint64_t done = 0; length - done >= sizeof(FileRecord);) {
        std::size_t got = 0;
        const ResultCode result =
            file.ReadAt(done, block.data(), BufferRecords * sizeof(FileRecord), &got);
        const std::size_t records = got / sizeof(FileRecord);
        if (result != ResultSuccess || records == 0) {
            break;
        }
        for (std::size_t i = 0; i < records; ++i) {
            if (MatchesPattern(block[i], pattern)) {
                outRecords.push_back(block[i]);
            }
        }
        done += records * sizeof(FileRecord);
        const auto percent = static_cast<std::int32_t>(done * 100 / length);
        if (m_searchCallback != nullptr && m_searchCallback(m_searchContext, percent, 0) != 0) {
            break;
        }
    }
    SortRecords(outRecords);
    return 1;
}
