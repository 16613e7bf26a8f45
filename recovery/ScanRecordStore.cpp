#include "recovery/ScanRecordStore.h"

#include "platform/FileTime.h"
#include "platform/Folders.h"
#include "recovery/RelationText.h"
#include "recovery/ScanLogDirectory.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr std::size_t ReadPiece = 65536;

// The whole of a small file; empty after a read fault, which is not reported.
std::vector<char> ReadAll(const FileHandle& file)
{
    std::uint64_t size = 0;
    std::vector<char> bytes;
    if (file.Size(&size) != ResultSuccess) {
        return bytes;
    }
    // Grown by what arrives: a size that lies must not allocate.
    while (bytes.size() < size) {
        const std::size_t at = bytes.size();
        bytes.resize(at + ReadPiece);
        std::size_t got = 0;
        if (file.ReadAt(at, bytes.data() + at, ReadPiece, &got) != ResultSuccess) {
            return {};
        }
        bytes.resize(at + got);
        if (got == 0) {
            break;
        }
    }
    return bytes;
}

}  // namespace

ScanRecordStore::~ScanRecordStore()
{
    (void)FlushStore();
}

std::string ScanRecordStore::MakeName(std::string_view prefix, std::uint64_t startLba)
{
    const CalendarTime now = LocalTimeNow();
    char digits[96] = {};
    std::snprintf(digits, sizeof digits, "%lld_%d%d%d%d%2d", static_cast<long long>(startLba),
                  now.year, now.month, now.day, now.hour, now.minute);
    return std::string(prefix) + digits;
}

ResultCode ScanRecordStore::OpenStore(std::string_view logName)
{
    const std::filesystem::path folder = ScanLogDirectory::Instance().CurrentLogPath();
    if (const ResultCode made = MakePrivateFolderWithParents(folder); !FolderIsThere(made)) {
        return made;
    }
    const std::string name(logName);
    m_mainPath = folder / name;
    ResultCode result = m_mainFile.OpenOrCreate(m_mainPath);
    if (const ResultCode opened = m_relationFile.OpenOrCreate(folder / (name + "_Relation"))) {
        result = opened;
    }
    if (result != ResultSuccess) {
        return result;
    }
    std::uint64_t size = 0;
    (void)m_mainFile.Size(&size);  // 0 appends at the start, as to a new file
    // A torn last record would shift everything behind it.
    m_appendPosition = size - size % sizeof(FileRecord);
    if (m_appendPosition != size) {
        (void)m_mainFile.Truncate(m_appendPosition);
    }
    LoadRelation();
    // Without folder names paths are poorer, but files can be found: no failure.
    if (m_dirInfoFile.OpenOrCreate(folder / (name + "_DirInfo")) == ResultSuccess) {
        LoadDirInfo();
    }
    return ResultSuccess;
}

void ScanRecordStore::LoadRelation()
{
    const std::vector<char> text = ReadAll(m_relationFile);
    m_relation = ParseRelationText({text.data(), text.size()});
}

void ScanRecordStore::LoadDirInfo()
{
    const std::vector<char> bytes = ReadAll(m_dirInfoFile);
    m_dirInfo.resize(bytes.size() / sizeof(DirInfoRecord));
    if (!m_dirInfo.empty()) {
        std::memcpy(static_cast<void*>(m_dirInfo.data()), bytes.data(),
                    m_dirInfo.size() * sizeof(DirInfoRecord));
    }
}

FileRecord& ScanRecordStore::ReserveRecord()
{
    if (m_bufferUsed == BufferRecords) {
        (void)WriteBuffer();
    }
    ++m_recordCount;
    // Zeroed, so that equal scans give equal files and no memory leaks to disk.
    return m_buffer[m_bufferUsed++] = FileRecord();
}

void ScanRecordStore::LinkRecord(std::uint32_t parentId,
                                 std::uint32_t depth,
                                 std::uint32_t recordNumber)
{
    m_relation[MakeKey(depth, parentId)].push_back(recordNumber);
    m_relationChanged = true;
    m_parentsIndexed = false;
}

void ScanRecordStore::LinkFolder(std::uint32_t parentId,
                                 std::uint32_t depth,
                                 std::uint32_t recordNumber,
                                 std::uint32_t nodeId,
                                 std::string_view name)
{
    LinkRecord(parentId, depth, recordNumber);
    DirInfoRecord& folder = m_dirInfo.emplace_back();
    folder.FolderId = nodeId;
    folder.RecordNumber = recordNumber;
    StoreName(folder.Name, name);
    m_dirInfoChanged = true;
}

ResultCode ScanRecordStore::WriteBuffer()
{
    if (m_bufferUsed == 0) {
        return ResultSuccess;
    }
    const std::size_t bytes = m_bufferUsed * sizeof(FileRecord);
    m_bufferUsed = 0;
    if (!m_mainFile.IsOpen()) {
        return ResultInvalidHandle;
    }
    std::size_t written = 0;
    const ResultCode result =
        m_mainFile.WriteAt(m_appendPosition, m_buffer.data(), bytes, &written);
    m_appendPosition += written;
    m_foldersIndexed = false;
    return result;
}

ResultCode ScanRecordStore::FlushStore()
{
    if (const ResultCode result = WriteBuffer()) {
        return result;
    }
    ResultCode result = ResultSuccess;
    if (m_relationChanged) {
        result = WriteRelation();
        m_relationChanged = result != ResultSuccess;
    }
    if (m_dirInfoChanged) {
        if (const ResultCode written = WriteDirInfo()) {
            return written;
        }
        m_dirInfoChanged = false;
    }
    return result;
}

ResultCode ScanRecordStore::WriteRelation()
{
    if (!m_relationFile.IsOpen()) {
        return ResultInvalidHandle;
    }
    std::uint64_t position = 0;
    std::string text;
    for (auto at = m_relation.begin(); at != m_relation.end();) {
        AppendRelationEntry(at->first, at->second, text);
        ++at;
        if (text.size() >= ReadPiece || at == m_relation.end()) {
            if (const ResultCode result =
                    m_relationFile.WriteAt(position, text.data(), text.size())) {
                return result;
            }
            position += text.size();
            text.clear();
        }
    }
    return ResultSuccess;
}

ResultCode ScanRecordStore::WriteDirInfo()
{
    if (!m_dirInfoFile.IsOpen()) {
        return ResultInvalidHandle;
    }
    return m_dirInfoFile.WriteAt(0, m_dirInfo.data(), m_dirInfo.size() * sizeof(DirInfoRecord));
}

void ScanRecordStore::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
}
