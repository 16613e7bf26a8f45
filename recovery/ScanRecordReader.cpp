#include "recovery/ScanRecordReader.h"

#include "platform/Text.h"
#include "recovery/FileTypeCatalogue.h"
#include "recovery/ScanRecordStore.h"

#include <algorithm>
#include <unordered_set>

namespace {

constexpr std::size_t LongestPattern = 4095;
constexpr std::size_t BlockRecords = 200;  // read at once

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

}  // namespace

ScanRecordReader::ScanRecordReader(const ScanRecordStore& store)
    : m_mainPath(store.MainPath()), m_index(store.Index())
{
    if (!m_mainPath.empty()) {
        (void)m_mainFile.OpenForReading(m_mainPath);  // each read tells that it could not be
    }
}

ResultCode ScanRecordReader::ReadRecord(std::uint32_t recordNumber, FileRecord& outRecord) const
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

// The list of a key; the lowest key's for 0. False when there is none; *outMissing when the key itself is not there.
bool ScanRecordReader::NumbersOf(std::uint64_t key,
                                 std::vector<std::uint32_t>& outNumbers,
                                 bool* outMissing) const
{
    const std::lock_guard guard(m_index->lock);
    const StoreRelation& relation = m_index->relation;
    const auto found = key == 0 ? relation.begin() : relation.find(key);
    *outMissing = key != 0 && found == relation.end();
    if (found == relation.end()) {
        return false;
    }
    outNumbers = found->second;
    return true;
}

ResultCode ScanRecordReader::ListChildren(std::uint64_t key,
                                          FileRecordList& outRecords,
                                          std::vector<std::uint64_t>& outMissing)
{
    std::vector<std::uint32_t> numbers;
    bool missing = false;
    if (!NumbersOf(key, numbers, &missing) && !missing) {
        return ResultSuccess;
    }
    if (missing) {
        outMissing.push_back(key);
    }
    ResultCode result = ResultSuccess;
    for (const std::uint32_t number : numbers) {
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

ResultCode ScanRecordReader::CountChildren(std::uint64_t key,
                                           std::uint32_t& outCount,
                                           std::vector<std::uint64_t>& outMissing)
{
    outCount = 0;
    ResultCode result = ResultSuccess;
    // Keys by depth, each with how often it was reached: two folder records may share a node, and walking a
    // shared tree once for each would double at every level.
    std::map<std::uint64_t, std::uint32_t> waiting = {{key, 1}};
    while (!waiting.empty()) {
        const auto [current, times] = *waiting.begin();
        waiting.erase(waiting.begin());
        std::vector<std::uint32_t> numbers;
        bool missing = false;
        (void)NumbersOf(current, numbers, &missing);
        if (missing) {
            outMissing.push_back(current);
        }
        const std::uint64_t childDepth = (current >> 32) + 1;
        for (const std::uint32_t number : numbers) {
            FileRecord record;
            if (const ResultCode read = ReadRecord(number, record)) {
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

void ScanRecordReader::IndexParents()
{
    const std::lock_guard guard(m_index->lock);
    if (m_parentsVersion == m_index->linkVersion) {
        return;
    }
    m_parentsVersion = m_index->linkVersion;
    m_parentKeys.clear();
    for (const auto& [key, numbers] : m_index->relation) {
        for (const std::uint32_t number : numbers) {
            m_parentKeys.try_emplace(number, key);  // the lowest key stays
        }
    }
    m_folderNames.clear();
    for (const DirInfoRecord& folder : m_index->dirInfo) {
        const auto [known, isNew] = m_folderNames.try_emplace(std::uint32_t{folder.FolderId});
        if (isNew) {  // the first entry stays
            known->second = {std::uint32_t{folder.RecordNumber}, std::string(folder.NameText())};
        }
    }
}

void ScanRecordReader::IndexFolders()
{
    std::uint64_t version = 0;
    {
        const std::lock_guard guard(m_index->lock);
        version = m_index->writeVersion;
    }
    if (m_foldersVersion == version) {
        return;
    }
    m_foldersVersion = version;
    m_foldersByNode.clear();
    std::vector<FileRecord> block(BlockRecords);
    std::uint64_t position = 0;
    std::size_t got = 0;
    do {
        if (m_mainFile.ReadAt(position, block.data(), BlockRecords * sizeof(FileRecord), &got) !=
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
}

ResultCode ScanRecordReader::FindRecordByNode(std::uint32_t nodeId, FileRecord& outRecord)
{
    IndexFolders();
    const auto found = m_foldersByNode.find(nodeId);
    return found != m_foldersByNode.end() ? ReadRecord(found->second, outRecord)
                                          : ResultInvalidParameter;
}

// The folder that a record is linked under: *outFound is false at the root. Of a folder known by name alone only
// Name and RecordNumber are set.
ResultCode
ScanRecordReader::FolderAbove(const FileRecord& record, FileRecord& outFolder, bool* outFound)
{
    *outFound = false;
    const auto key = m_parentKeys.find(std::uint32_t{record.RecordNumber});
    {
        const std::lock_guard guard(m_index->lock);
        // The lowest key stands for the root.
        if (key == m_parentKeys.end() || key->second == m_index->relation.begin()->first) {
            return ResultSuccess;
        }
    }
    const auto folderId = static_cast<std::uint32_t>(key->second);
    const auto known = m_folderNames.find(folderId);
    if (known == m_folderNames.end()) {
        const ResultCode result = FindRecordByNode(folderId, outFolder);
        *outFound = result == ResultSuccess;
        return result;
    }
    outFolder = FileRecord();
    outFolder.RecordNumber = known->second.recordNumber;
    outFolder.SetName(known->second.name);
    *outFound = true;
    return ResultSuccess;
}

ResultCode ScanRecordReader::GetRecordPath(const FileRecord* record, std::string& outPath)
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

std::uint64_t ScanRecordReader::CountRecords() const
{
    FileHandle file;
    std::uint64_t length = 0;
    if (file.OpenForReading(m_mainPath) != ResultSuccess || file.Size(&length) != ResultSuccess) {
        return 0;
    }
    return length / sizeof(FileRecord);
}

std::int32_t ScanRecordReader::SearchRecords(std::string_view extensionPattern,
                                             const SearchProgress& progress,
                                             const TakeRow& take) const
{
    const std::string_view pattern = extensionPattern.substr(0, LongestPattern);
    FileHandle file;
    std::uint64_t length = 0;
    if (file.OpenForReading(m_mainPath) != ResultSuccess || file.Size(&length) != ResultSuccess) {
        return 0;
    }
    std::vector<FileRecord> block(BlockRecords);
    for (std::uint64_t done = 0; length - done >= sizeof(FileRecord);) {
        // Not beyond the length that was found: a store that is being filled grows on.
        const std::size_t wanted =
            std::min<std::uint64_t>(BlockRecords, (length - done) / sizeof(FileRecord));
        std::size_t got = 0;
        const ResultCode result =
            file.ReadAt(done, block.data(), wanted * sizeof(FileRecord), &got);
        const std::size_t records = got / sizeof(FileRecord);
        if (result != ResultSuccess || records == 0) {
            break;
        }
        for (std::size_t i = 0; i < records; ++i) {
            if (MatchesPattern(block[i], pattern)) {
                take(block[i], static_cast<std::uint32_t>(done / sizeof(FileRecord) + i + 1));
            }
        }
        done += records * sizeof(FileRecord);
        if (progress && progress(static_cast<std::int32_t>(done * 100 / length)) != 0) {
            break;
        }
    }
    return 1;
}
