// What the engines that write records share: a store and the questions to it, restoring and previews, the callbacks.
#pragma once

#include "recovery/EngineBase.h"
#include "recovery/Heartbeat.h"
#include "recovery/RecordCopy.h"
#include "recovery/ResumableScan.h"
#include "recovery/RowSearch.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/ScanRecordReader.h"
#include "recovery/ScanRecordStore.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

// An engine adds how it finds files, under which key a folder's children stand, and a reader of a record's data.
class CStoreEngine : public CEngineBase, public IKeepsRecords, public IRowSearch
{
public:
    // Stores go into log's folders; it is also where previews go.
    explicit CStoreEngine(std::shared_ptr<ScanLogDirectory> log);

    // Where the next store is opened. Without it a scan into a new store begins a folder of its own.
    void SetLogFolder(std::filesystem::path folder) { m_logFolder = std::move(folder); }
    const std::filesystem::path& LogFolder() const override { return m_logFolder; }
    // Writes out what the store holds in memory, before a position is saved that counts on it.
    void FlushStore();
    // Waits until its records are on the disk.
    [[nodiscard]] ResultCode SyncRecords();
    // What the store could not keep.
    LostRecords Lost() const override;
    SectorRanges Unread() const override;
    std::uint64_t UnreadSectors() const override
    {
        return m_scanSource != nullptr ? m_scanSource->UnreadSectors() : 0;
    }
    std::shared_ptr<const ScanMarks> Marks() const override
    {
        return m_scanSource != nullptr ? m_scanSource->Marks() : nullptr;
    }

    ResultCode SetCallbacks(ProgressCallback scanCallback,
                            FileProgressCallback fileCallback,
                            void* context,
                            std::int32_t progressRange) override;
    ResultCode ListChildren(const FileRecord* parentRecord,
                            std::uint32_t depth,
                            FileRecordList& outRecords) override;
    ResultCode CountChildren(const FileRecord* parentRecord,
                             std::uint32_t depth,
                             std::uint32_t& outCount) override;
    std::uint64_t GetRecordCount() const override;
    ResultCode GetRecordPath(const FileRecord* record, std::string& outPath) override;
    ResultCode RestoreRecord(const FileRecord* record,
                             const std::filesystem::path& destPath,
                             std::uint32_t baseDepth) override;
    // ResultInvalidParameter without a store; the callback is kept for the next one all the same.
    ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) override;
    std::int32_t SearchRecords(std::string_view extensionPattern,
                               FileRecordList& outRecords) override;
    std::int32_t SearchRows(std::string_view extensionPattern, FoundRowList& outRows) override;
    // Records that a search goes through; 0 when that is not known.
    std::uint64_t CountStored();
    // The same as the two searches, and what stood there before is left alone.
    std::int32_t AppendRecords(std::string_view extensionPattern, FileRecordList& outRecords);
    std::int32_t AppendRows(std::string_view extensionPattern, FoundRowList& outRows);
    // Where restoring takes a file's first bytes from; none where that cannot be told.
    std::optional<BytePlaces> PlacesOf(const FileRecord& record, std::uint64_t bytes);
    ResultCode ReadRecordData(const FileRecord* record,
                              std::filesystem::path& tempPathInOut,
                              std::uint8_t* buffer,
                              std::uint32_t& inOutSize,
                              PreviewProgressCallback progressFn,
                              void* context) override;

protected:
    // Which of the two questions a key is for.
    enum class KeyUse
    {
        List,
        Count
    };
    // The key of a folder's children; none when there is nothing to ask for, which answers 0 and touches nothing.
    [[nodiscard]] virtual ResultCode KeyOf(const FileRecord* parentRecord,
                                           std::uint32_t depth,
                                           KeyUse use,
                                           std::optional<std::uint64_t>* outKey) const = 0;
    virtual std::unique_ptr<IRecordReader> MakeReader(const FileRecord& record) = 0;

    // Replaces the store by one of that name, an old or a new one.
    ResultCode MakeStore(std::string_view logName);
    // The same, cut to its first records, all of which lie in the root.
    ResultCode MakeStoreCut(std::string_view logName, std::uint32_t records);
    bool HasStore() const { return m_store != nullptr; }
    // Before a new scan: the folder that was handed down, else a new one.
    void UseLogFolder();
    [[nodiscard]] ResultCode RestoreFile(const FileRecord& record,
                                         const std::filesystem::path& path);
    // The scan callback, range and all; 0 without one.
    ResultCode Report(std::int32_t progress, std::int32_t secondsLeft) const;
    // Of a phase before the first figures.
    ResultCode ReportIfDue(Heartbeat& heartbeat) const
    {
        return heartbeat.IsDue() ? Report(0, -1) : ResultSuccess;
    }

    std::shared_ptr<ScanLogDirectory> m_log;
    std::filesystem::path m_logFolder;
    std::shared_ptr<ScanSource> m_scanSource;  // null until opened
    SectorSource m_source;
    char16_t m_driveLetter = 0;
    std::unique_ptr<ScanRecordStore> m_store;  // null until a scan

    ProgressCallback m_scanCallback = nullptr;
    FileProgressCallback m_fileCallback = nullptr;
    void* m_callbackContext = nullptr;
    std::int32_t m_progressRange = 100;

private:
    std::unique_ptr<ScanRecordStore> NewStore() const;
    std::int32_t Search(std::string_view extensionPattern, const ScanRecordReader::TakeRow& take);

    std::unique_ptr<ScanRecordReader> m_reader;  // of m_store
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;
};
