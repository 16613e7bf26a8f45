// The deep engine: a quick engine reads what the file system still knows, then one pass over the sectors that it does
// not use (or over all) shows each to the analyser that it fits. Four stores in one log folder, searched as one.
#pragma once

#include "recovery/CheckpointFile.h"
#include "recovery/DataPlaces.h"
#include "recovery/EngineBase.h"
#include "recovery/ResumableScan.h"
#include "recovery/RowSearch.h"
#include "recovery/ScanLogDirectory.h"
#include "recovery/carving/FileTypeRecovery.h"
#include "recovery/deep/FirstSectorCache.h"
#include "recovery/deep/ScanJournal.h"
#include "recovery/fat/ProfessionalFatRecovery.h"
#include "recovery/ntfs/ProfessionalNtfsRecovery.h"
#include "storage/SectorSource.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

// Makes the quick engine that fits a target, opened; null where none does. The deep engine does not know how.
using FastEngineMaker = std::function<std::unique_ptr<IFileRecoveryParse>(
    const std::shared_ptr<ScanSource>& source, char16_t letter)>;

// What the pass reads. Over all sectors the quick engine's findings are kept beside the pass's, and that it fails does not
// end the scan.
enum class PassOver
{
    FreeSectors,  // of the file system, where the quick engine knows them
    AllSectors
};

// Opened once, scanned once, then queried. Only one in a process may scan at a time: the carver's state is shared.
class CProfessionalRecovery : public CEngineBase,
                              public IResumableScan,
                              public IRowSearch,
                              public ITellsDataPlaces
{
public:
    CProfessionalRecovery(std::shared_ptr<ScanLogDirectory> log,
                          FastEngineMaker maker,
                          PassOver passOver = PassOver::FreeSectors);

    ResultCode Open(std::shared_ptr<ScanSource> source, char16_t driveLetter) override;
    bool HasResumableScan() const override { return m_resumeValid; }
    const ScanLogEntry& ResumableScan() const override { return m_resumeEntry; }
    void DiscardResumableScan() override;
    const std::filesystem::path& LogFolder() const override { return m_logFolder; }
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
    void ReadUnreadAgain() override { m_againUnread = true; }
    bool StandsInLog() const override { return m_saved; }
    ResultCode QuickFault() const override { return m_quickFault; }
    // How often a scan writes down how far it is, in milliseconds; for tests.
    void SetCheckpointInterval(std::uint64_t interval) { m_checkpointInterval = interval; }

    // The range is ignored: the pass takes 90, the quick engine 9.
    ResultCode SetCallbacks(ProgressCallback scanCallback,
                            FileProgressCallback fileCallback,
                            void* context,
                            std::int32_t progressRange) override;
    // The whole pipeline, new or resumed; the name is ignored. While the analyses end, the callback gets the pass's last
    // call again from time to time; of its answers only ResultStoppedAtOnce counts then, and nothing is saved after it.
    ResultCode Scan(const std::string* logName) override;
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
    ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) override;
    // All four stores; a carved file that a metadata record covers is left out.
    std::int32_t SearchRecords(std::string_view extensionPattern,
                               FileRecordList& outRecords) override;
    std::int32_t SearchRows(std::string_view extensionPattern, FoundRowList& outRows) override;
    std::optional<std::uint64_t> FirstDataByte(const FileRecord& record) override;
    std::optional<BytePlaces> PlacesOf(const FileRecord& record, std::uint64_t bytes) override;
    ResultCode ReadRecordData(const FileRecord* record,
                              std::filesystem::path& tempPathInOut,
                              std::uint8_t* buffer,
                              std::uint32_t& inOutSize,
                              PreviewProgressCallback progressFn,
                              void* context) override;

private:
    // How far the pass is.
    struct Pass
    {
        bool haveFreeMap = false;
        ScanPosition at;
        std::uint64_t sectorsTotal = 0;
        std::uint64_t filesBase = 0;  // found before a resume
        std::int32_t secondsLeft = -1;
        std::int64_t skip = 0;
        std::uint64_t startTick = 0;
        std::uint64_t lastTick = 0;
        std::uint64_t checkpointTick = 0;
        CheckpointState
            boundary;  // the state that a checkpoint keeps: the one before a block, or after it
    };

    // Those whose answers are gathered, in their order; the quick one may be null.
    std::array<IFileRecoveryParse*, 4> Engines();
    IFileRecoveryParse* EngineOf(const FileRecord& record);
    bool CanBeRead(const BytePlaces& places);
    std::optional<std::uint64_t> FirstDataSector(const FileRecord& record);
    std::optional<std::uint64_t> FindFirstDataSector(const FileRecord& record);
    template <typename Item, typename AppendOf>
    std::int32_t GatherSearch(const AppendOf& append, std::vector<Item>& outItems);
    // DeepScan.cpp
    void HandDownLogFolder();
    void TakeUnread(bool isResume);
    [[nodiscard]] ResultCode RunFastPhase(bool isResume, Pass& pass);
    [[nodiscard]] ResultCode RunFast(bool isResume, Pass& pass);
    [[nodiscard]] ResultCode RunDeepPhase(bool isResume, Pass& pass);
    void OpenStores(bool isResume);
    void PreparePass();
    void OpenStoresCut(const Checkpoint& checkpoint);
    // DeepCheckpoint.cpp
    bool FindCheckpoint();
    [[nodiscard]] ResultCode Replay(Pass& pass);
    void BeginJournal(std::uint64_t keepBytes);
    CheckpointState BoundaryOf(const Pass& pass) const;
    void SaveCheckpoint(const Pass& pass, class BlockReader& reader);
    void SaveEnd(const Pass& pass, ResultCode result);
    void DropEarlier();
    std::string StoredName(std::string_view prefix) const;
    [[nodiscard]] ResultCode RunAgain(Pass& pass, class BlockReader& reader);
    void FindFirstRange(Pass& pass);
    bool NextRange(std::uint64_t& inOutSector, std::uint64_t& outLength);
    [[nodiscard]] ResultCode RunPass(Pass& pass);
    [[nodiscard]] ResultCode RunRanges(Pass& pass, class BlockReader& reader);
    [[nodiscard]] ResultCode RunRange(Pass& pass, class BlockReader& reader);
    bool ClassAt(Pass& pass,
                 class BlockReader& reader,
                 std::uint64_t lba,
                 std::int64_t sectors,
                 bool& outIsCut);
    [[nodiscard]] ResultCode
    RunBlock(Pass& pass, class BlockReader& reader, std::int64_t& remaining);
    [[nodiscard]] ResultCode ReportBlock(Pass& pass);
    ResultCode ReportPass(const Pass& pass) const;
    [[nodiscard]] ResultCode FinishAnalyses(const Pass& pass);

    std::shared_ptr<ScanLogDirectory> m_log;
    FastEngineMaker m_makeFast;
    PassOver m_passOver;
    ResultCode m_quickFault = ResultSuccess;
    std::shared_ptr<ScanSource> m_scanSource;
    ScanIdentity m_target;
    char16_t m_driveLetter = 0;
    std::int32_t m_sectorSize = 512;
    SectorSource m_source;
    SectorSource m_aheadSource;  // a second descriptor, for reading ahead
    CProfessionalFatRecovery m_fat;
    CProfessionalNtfsRecovery m_ntfs;
    CFileTypeRecovery m_carver;
    std::unique_ptr<IFileRecoveryParse> m_fast;
    bool m_resumeValid = false;
    ScanLogEntry m_resumeEntry;
    std::filesystem::path m_logFolder;
    FirstSectorCache m_firstSectors;
    SectorRanges m_unread;  // as the source told last

    std::unique_ptr<Checkpoint> m_checkpoint;  // that this scan goes on from
    std::filesystem::path m_dropped;           // of an earlier scan; removed when this one is saved
    std::unique_ptr<ScanJournal> m_journal;    // null when nothing is kept of the pass
    ScanLogEntry m_ownEntry;
    std::uint64_t m_checkpointInterval = 5000;
    bool m_saved = false;
    bool m_againUnread = false;
    SectorRanges m_again;  // what this scan reads, and nothing else; empty for all others

    ProgressCallback m_scanCallback = nullptr;
    void* m_callbackContext = nullptr;
    SearchProgressCallback m_searchCallback = nullptr;
    void* m_searchContext = nullptr;
};
