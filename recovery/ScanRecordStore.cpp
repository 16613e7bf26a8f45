#include "recovery/ScanRecordStore.h"

#include "platform/FileTime.h"
#include "platform/Folders.h"
#include "recovery/RelationText.h"

#include <cstdio>
#include <cstring>
#include <utility>

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

// Without the folder names, whose file need not open: paths are poorer then, but files can be found.
ResultCode ScanRecordStore::OpenFiles(const std::filesystem::path& folder, std::string_view logName)
{
    if (const ResultCode made = MakePrivateFolderWithParents(folder); !FolderIsThere(made)) {
        return NoteFault(made);
    }
    const std::string name(logName);
    m_mainPath = folder / name;
    ResultCode result = m_mainFile.OpenOrCreate(m_mainPath);
    if (const ResultCode opened = m_relationFile.OpenOrCreate(folder / (name + "_Relation"))) {
        result = opened;
    }
    (void)m_dirInfoFile.OpenOrCreate(folder / (name + "_DirInfo"));
    return NoteFault(result);
}

// A store that cannot be written remembers it: what it loses is told at the scan's end.
ResultCode ScanRecordStore::NoteFault(ResultCode result)
{
    m_writeFault = m_writeFault != ResultSuccess ? m_writeFault : result;
    return result;
}

ResultCode ScanRecordStore::OpenStoreCut(const std::filesystem::path& folder,
                                         std::string_view logName,
                                         std::uint32_t records,
                                         std::uint64_t key)
{
    ResultCode result = OpenFiles(folder, logName);
    m_appendPosition = std::uint64_t{records} * sizeof(FileRecord);
    for (const auto& [file, bytes] :
         {std::pair(&m_mainFile, m_appendPosition), std::pair(&m_relationFile, std::uint64_t{0}),
          std::pair(&m_dirInfoFile, std::uint64_t{0})}) {
        if (result == ResultSuccess && file->IsOpen()) {
            result = file->Truncate(bytes);
        }
    }
    m_recordCount = records;
    const std::lock_guard guard(m_index->lock);
    for (std::uint32_t number = 1; number <= records; ++number) {
        EnterNumber(key, number);
    }
    return NoteFault(result);
}

ResultCode ScanRecordStore::OpenStore(const std::filesystem::path& folder, std::string_view logName)
{
    if (const ResultCode result = OpenFiles(folder, logName)) {
        return result;
    }
    std::uint64_t size = 0;
    (void)m_mainFile.Size(&size);  // 0 appends at the start, as to a new file
    // A torn last record would shift everything after it.
    m_appendPosition = size - size % sizeof(FileRecord);
    if (m_appendPosition != size) {
        (void)m_mainFile.Truncate(m_appendPosition);
    }
    LoadRelation();
    if (m_dirInfoFile.IsOpen()) {
        LoadDirInfo();
    }
    return ResultSuccess;
}

void ScanRecordStore::LoadRelation()
{
    const std::vector<char> text = ReadAll(m_relationFile);
    const std::lock_guard guard(m_index->lock);
    m_index->relation = ParseRelationText({text.data(), text.size()});
}

void ScanRecordStore::LoadDirInfo()
{
    const std::vector<char> bytes = ReadAll(m_dirInfoFile);
    const std::lock_guard guard(m_index->lock);
    std::vector<DirInfoRecord>& dirInfo = m_index->dirInfo;
    dirInfo.resize(bytes.size() / sizeof(DirInfoRecord));
    if (!dirInfo.empty()) {
        std::memcpy(static_cast<void*>(dirInfo.data()), bytes.data(),
                    dirInfo.size() * sizeof(DirInfoRecord));
    }
}

void ScanRecordStore::MarkFilesOn(std::shared_ptr<ScanMarks> marks, std::uint32_t sectorSize)
{
    m_marks = std::move(marks);
    m_sectorSize = sectorSize;
}

// The record that was reserved last, which is filled once another one is asked for.
void ScanRecordStore::MarkLast() const
{
    if (m_marks != nullptr && m_bufferUsed != 0 && m_buffer[m_bufferUsed - 1].IsFolder == 0) {
        m_marks->NoteFound(m_buffer[m_bufferUsed - 1].EntrySector * m_sectorSize);
    }
}

FileRecord& ScanRecordStore::ReserveRecord()
{
    MarkLast();
    if (m_bufferUsed == BufferRecords) {
        (void)WriteBuffer();
    }
    ++m_recordCount;
    // Zeroed, so that equal scans give equal files and no memory leaks to disk.
    return m_buffer[m_bufferUsed++] = FileRecord();
}

// The index is locked.
void ScanRecordStore::EnterNumber(std::uint64_t key, std::uint32_t recordNumber)
{
    m_index->relation[key].push_back(recordNumber);
    ++m_index->linkVersion;
    m_relationChanged = true;
}

void ScanRecordStore::LinkRecord(std::uint32_t parentId,
                                 std::uint32_t depth,
                                 std::uint32_t recordNumber)
{
    const std::lock_guard guard(m_index->lock);
    EnterNumber(MakeStoreKey(depth, parentId), recordNumber);
}

void ScanRecordStore::LinkFolder(std::uint32_t parentId,
                                 std::uint32_t depth,
                                 std::uint32_t recordNumber,
                                 std::uint32_t nodeId,
                                 std::string_view name)
{
    const std::lock_guard guard(m_index->lock);
    EnterNumber(MakeStoreKey(depth, parentId), recordNumber);
    DirInfoRecord& folder = m_index->dirInfo.emplace_back();
    folder.FolderId = nodeId;
    folder.RecordNumber = recordNumber;
    StoreName(folder.Name, name);
    m_dirInfoChanged = true;
}

void ScanRecordStore::EnterEmptyKeys(std::span<const std::uint64_t> keys)
{
    const std::lock_guard guard(m_index->lock);
    for (const std::uint64_t key : keys) {
        m_relationChanged = m_index->relation.try_emplace(key).second || m_relationChanged;
    }
}

ResultCode ScanRecordStore::WriteBuffer()
{
    if (m_bufferUsed == 0) {
        return ResultSuccess;
    }
    MarkLast();
    const std::size_t records = std::exchange(m_bufferUsed, 0);
    if (!m_mainFile.IsOpen()) {
        m_lostRecords += records;
        return NoteFault(ResultInvalidHandle);
    }
    std::size_t written = 0;
    const ResultCode result = m_mainFile.WriteAt(m_appendPosition, m_buffer.data(),
                                                 records * sizeof(FileRecord), &written);
    // What was written of a torn record is written over: it would shift everything after it.
    const std::size_t whole = written / sizeof(FileRecord);
    m_appendPosition += whole * sizeof(FileRecord);
    m_lostRecords += records - whole;
    const std::lock_guard guard(m_index->lock);
    ++m_index->writeVersion;
    return NoteFault(result);
}

ResultCode ScanRecordStore::SyncRecords()
{
    const ResultCode result = WriteBuffer();
    return result == ResultSuccess ? NoteFault(m_mainFile.SyncData()) : result;
}

ResultCode ScanRecordStore::FlushStore()
{
    if (const ResultCode result = WriteBuffer()) {
        return result;
    }
    ResultCode result = ResultSuccess;
    if (m_relationChanged) {
        result = NoteFault(WriteRelation());
        m_relationChanged = result != ResultSuccess;
    }
    if (m_dirInfoChanged) {
        if (const ResultCode written = NoteFault(WriteDirInfo())) {
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
    // Only this side changes the index, so reading it here needs no lock.
    const StoreRelation& relation = m_index->relation;
    for (auto at = relation.begin(); at != relation.end();) {
        AppendRelationEntry(at->first, at->second, text);
        ++at;
        if (text.size() >= ReadPiece || at == relation.end()) {
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
    const std::vector<DirInfoRecord>& dirInfo = m_index->dirInfo;  // as above
    return m_dirInfoFile.WriteAt(0, dirInfo.data(), dirInfo.size() * sizeof(DirInfoRecord));
}
