#include "recovery/StoreEngine.h"

#include "recovery/RestoreSupport.h"

#include <utility>

CStoreEngine::CStoreEngine(std::shared_ptr<ScanLogDirectory> log) : m_log(std::move(log)) {}

ResultCode CStoreEngine::SetCallbacks(ProgressCallback scanCallback,
                                      FileProgressCallback fileCallback,
                                      void* context,
                                      std::int32_t progressRange)
{
    m_scanCallback = scanCallback;
    m_fileCallback = fileCallback;
    m_callbackContext = context;
    m_progressRange = progressRange;
    return ResultSuccess;
}

ResultCode CStoreEngine::Report(std::int32_t progress, std::int32_t secondsLeft) const
{
    return m_scanCallback != nullptr ? m_scanCallback(m_callbackContext, progress, m_progressRange,
                                                      secondsLeft, 0, 0, 0, 0)
                                     : ResultSuccess;
}

void CStoreEngine::UseLogFolder()
{
    if (m_logFolder.empty()) {
        m_logFolder = m_log->BeginNewLog();
    }
}

std::unique_ptr<ScanRecordStore> CStoreEngine::NewStore() const
{
    auto store = std::make_unique<ScanRecordStore>();
    if (m_scanSource != nullptr) {
        store->MarkFilesOn(m_scanSource->Marks(), m_scanSource->SectorSize());
    }
    return store;
}

ResultCode CStoreEngine::MakeStore(std::string_view logName)
{
    m_reader.reset();
    m_store = NewStore();
    const ResultCode result = m_store->OpenStore(m_logFolder, logName);
    m_reader = std::make_unique<ScanRecordReader>(*m_store);
    return result;
}

ResultCode CStoreEngine::MakeStoreCut(std::string_view logName, std::uint32_t records)
{
    m_reader.reset();
    m_store = NewStore();
    const ResultCode result = m_store->OpenStoreCut(m_logFolder, logName, records, 0);
    m_reader = std::make_unique<ScanRecordReader>(*m_store);
    return result;
}

ResultCode CStoreEngine::SyncRecords()
{
    return m_store != nullptr ? m_store->SyncRecords() : ResultSuccess;
}

LostRecords CStoreEngine::Lost() const
{
    return m_store != nullptr ? LostRecords{m_store->LostRecords(), m_store->WriteFault()}
                              : LostRecords();
}

SectorRanges CStoreEngine::Unread() const
{
    return m_scanSource != nullptr ? m_scanSource->Unread() : SectorRanges();
}

void CStoreEngine::FlushStore()
{
    if (m_store != nullptr) {
        (void)m_store->FlushStore();  // what could not be written is not found
    }
}

ResultCode CStoreEngine::ListChildren(const FileRecord* parentRecord,
                                      std::uint32_t depth,
                                      FileRecordList& outRecords)
{
    std::optional<std::uint64_t> key;
    const ResultCode result = KeyOf(parentRecord, depth, KeyUse::List, &key);
    if (result != ResultSuccess || !key || m_store == nullptr) {
        return result;
    }
    FlushStore();
    std::vector<std::uint64_t> missing;
    const ResultCode listed = m_reader->ListChildren(*key, outRecords, missing);
    m_store->EnterEmptyKeys(missing);
    return listed;
}

ResultCode CStoreEngine::CountChildren(const FileRecord* parentRecord,
                                       std::uint32_t depth,
                                       std::uint32_t& outCount)
{
    std::optional<std::uint64_t> key;
    const ResultCode result = KeyOf(parentRecord, depth, KeyUse::Count, &key);
    if (result != ResultSuccess || !key) {
        return result;
    }
    outCount = 0;
    if (m_store == nullptr) {
        return ResultSuccess;
    }
    FlushStore();
    std::vector<std::uint64_t> missing;
    const ResultCode counted = m_reader->CountChildren(*key, outCount, missing);
    m_store->EnterEmptyKeys(missing);
    return counted;
}

std::uint64_t CStoreEngine::GetRecordCount() const
{
    return m_store != nullptr ? m_store->GetRecordCount() : 0;
}

ResultCode CStoreEngine::GetRecordPath(const FileRecord* record, std::string& outPath)
{
    return m_store != nullptr ? m_reader->GetRecordPath(record, outPath) : ResultInvalidParameter;
}

ResultCode CStoreEngine::RestoreFile(const FileRecord& record, const std::filesystem::path& path)
{
    return RestoreData(*MakeReader(record), record, path, m_fileCallback, m_callbackContext);
}

ResultCode CStoreEngine::RestoreRecord(const FileRecord* record,
                                       const std::filesystem::path& destPath,
                                       std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    if (record->IsFolder != 0) {
        return RestoreFolderTree(*this, *record, destPath, baseDepth,
                                 [this](const FileRecord& file, const std::filesystem::path& path) {
                                     return RestoreFile(file, path);
                                 });
    }
    if (const ResultCode made = MakeFolderOf(destPath)) {
        return made;
    }
    return RestoreFile(*record, destPath);
}

ResultCode CStoreEngine::SetSearchCallback(SearchProgressCallback callback, void* context)
{
    m_searchCallback = callback;
    m_searchContext = context;
    return m_store != nullptr ? ResultSuccess : ResultInvalidParameter;
}

std::int32_t CStoreEngine::Search(std::string_view extensionPattern,
                                  const ScanRecordReader::TakeRow& take)
{
    if (m_store == nullptr) {
        return 0;
    }
    FlushStore();
    return m_reader->SearchRecords(
        extensionPattern,
        [this](std::int32_t percent) {
            return m_searchCallback != nullptr ? m_searchCallback(m_searchContext, percent, 0)
                                               : ResultSuccess;
        },
        take);
}

std::uint64_t CStoreEngine::CountStored()
{
    if (m_store == nullptr) {
        return 0;
    }
    FlushStore();
    return m_reader->CountRecords();
}

std::int32_t CStoreEngine::AppendRecords(std::string_view extensionPattern,
                                         FileRecordList& outRecords)
{
    const std::size_t before = outRecords.size();
    outRecords.reserve(before + CountStored());
    const std::int32_t result =
        Search(extensionPattern, [&outRecords](const FileRecord& record, std::uint32_t /*place*/) {
            outRecords.push_back(record);
        });
    SortRecords(std::span(outRecords).subspan(before));
    return result;
}

std::int32_t CStoreEngine::AppendRows(std::string_view extensionPattern, FoundRowList& outRows)
{
    const std::size_t before = outRows.size();
    outRows.reserve(before + CountStored());
    const std::int32_t result =
        Search(extensionPattern, [&outRows](const FileRecord& record, std::uint32_t place) {
            outRows.push_back({record, {record.EngineKind, place}, std::nullopt});
        });
    SortRows(std::span(outRows).subspan(before));
    return result;
}

std::int32_t CStoreEngine::SearchRecords(std::string_view extensionPattern,
                                         FileRecordList& outRecords)
{
    const bool wasEmpty = outRecords.empty();
    const std::int32_t result = AppendRecords(extensionPattern, outRecords);
    if (m_store != nullptr && !wasEmpty) {
        SortRecords(outRecords);
    }
    return result;
}

std::int32_t CStoreEngine::SearchRows(std::string_view extensionPattern, FoundRowList& outRows)
{
    const bool wasEmpty = outRows.empty();
    const std::int32_t result = AppendRows(extensionPattern, outRows);
    if (m_store != nullptr && !wasEmpty) {
        SortRows(outRows);
    }
    return result;
}

std::optional<BytePlaces> CStoreEngine::PlacesOf(const FileRecord& record, std::uint64_t bytes)
{
    BytePlaces places;
    return bytes == 0 || MakeReader(record)->FindPlaces(bytes, places) ? std::optional(places)
                                                                       : std::nullopt;
}

ResultCode CStoreEngine::ReadRecordData(const FileRecord* record,
                                        std::filesystem::path& tempPathInOut,
                                        std::uint8_t* buffer,
                                        std::uint32_t& inOutSize,
                                        PreviewProgressCallback progressFn,
                                        void* context)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    return PreviewData(*MakeReader(*record), *record,
                       {m_log->Root(), tempPathInOut, buffer, inOutSize, progressFn, context});
}
