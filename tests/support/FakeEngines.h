// Engines that find, restore and fail as a test tells them, for what stands above engines.
#pragma once

#include "recovery/ResumableScan.h"
#include "recovery/ScanLogEntry.h"
#include "recovery/engines/EngineMaker.h"
#include "recovery/engines/FastExtRecovery.h"
#include "tests/support/TempFolder.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// What the fakes do, and what was done to them. Shared by a test and all engines that its maker makes.
struct FakeScript
{
    LostRecords lost;
    SectorRanges unread;
    int readAgain = 0;
    bool standsInLog = true;
    struct Call
    {
        std::int32_t progress = 0;
        std::int32_t range = 100;
        std::int32_t secondsLeft = -1;
        std::uint64_t done = 0;
        std::uint64_t total = 0;
        std::uint64_t found = 0;
    };

    FileRecordList records;
    std::vector<Call> calls = {{50}};  // that a scan makes
    std::function<void()> begins;      // before the first call of a scan, and of a search
    std::function<void()> inScan;      // between its calls and its end
    ResultCode opens = ResultSuccess;  // why there is no engine
    bool recognised = true;
    ResultCode scans = ResultSuccess;
    ResultCode quickFault = ResultSuccess;
    std::vector<ScanDepth> depths;  // that engines were made for
    std::optional<ScanLogEntry> earlier;
    std::filesystem::path logFolder;
    std::string folders;                                           // above every record
    ByteVector content;                                            // of every file
    std::function<ResultCode(const FileRecord& record)> restores;  // before the writing
    std::vector<ResultCode> answers;  // that the engine got from callbacks
    int discarded = 0;

    void Add(const std::string& name, std::uint64_t size, bool headIntact = true)
    {
        FileRecord& record = records.emplace_back();
        record.DriveLetter = 1001;
        record.EngineKind = EngineKindCarved;
        record.HeadIntact = headIntact ? 1 : 0;
        record.RecordNumber = static_cast<std::uint32_t>(records.size());
        record.FileSize = size;
        record.SetName(name);
    }
};

// The rest answers 0 and touches nothing.
class FakeEngine : public CFastExtRecovery, public IResumableScan
{
public:
    explicit FakeEngine(FakeScript& script) : m_script(script) {}

    bool HasResumableScan() const override { return m_script.earlier.has_value(); }
    const ScanLogEntry& ResumableScan() const override { return *m_script.earlier; }
    void DiscardResumableScan() override
    {
        m_script.earlier.reset();
        ++m_script.discarded;
    }
    const std::filesystem::path& LogFolder() const override { return m_script.logFolder; }
    LostRecords Lost() const override { return m_script.lost; }
    SectorRanges Unread() const override { return m_script.unread; }
    std::uint64_t UnreadSectors() const override { return m_script.unread.Sectors(); }
    void ReadUnreadAgain() override { ++m_script.readAgain; }
    ResultCode QuickFault() const override { return m_script.quickFault; }
    bool StandsInLog() const override { return m_script.standsInLog; }

    ResultCode SetCallbacks(ProgressCallback scan,
                            FileProgressCallback file,
                            void* context,
                            std::int32_t /*range*/) override
    {
        m_scan = scan;
        m_file = file;
        m_context = context;
        return ResultSuccess;
    }
    ResultCode Scan(const std::string* /*name*/) override
    {
        Begin();
        for (const FakeScript::Call& call : m_script.calls) {
            if (const ResultCode answer =
                    m_scan(m_context, call.progress, call.range, call.secondsLeft, call.done,
                           call.total, call.found, 0)) {
                return answer;
            }
        }
        if (m_script.inScan) {
            m_script.inScan();
        }
        return m_script.scans;
    }
    std::uint64_t GetRecordCount() const override { return m_script.records.size(); }
    ResultCode GetRecordPath(const FileRecord* /*record*/, std::string& path) override
    {
        path = m_script.folders;
        return ResultSuccess;
    }
    // In two halves, with a call after each.
    ResultCode RestoreRecord(const FileRecord* record,
                             const std::filesystem::path& path,
                             std::uint32_t /*baseDepth*/) override
    {
        const ResultCode fault = m_script.restores ? m_script.restores(*record) : ResultSuccess;
        WriteFileBytes(path, {m_script.content.data(), m_script.content.size() / 2});
        const ResultCode answer = m_file(m_context, 50, 100, fault, path);
        m_script.answers.push_back(answer);
        if (answer != ResultSuccess) {
            return answer;
        }
        WriteFileBytes(path, m_script.content);
        return m_file(m_context, 100, 100, ResultSuccess, path);
    }
    ResultCode SetSearchCallback(SearchProgressCallback callback, void* context) override
    {
        m_search = callback;
        m_searchContext = context;
        return ResultSuccess;
    }
    std::int32_t SearchRecords(std::string_view /*pattern*/, FileRecordList& records) override
    {
        Begin();
        for (const FileRecord& record : m_script.records) {
            if (m_search != nullptr && m_search(m_searchContext, 50, 0) != ResultSuccess) {
                break;
            }
            records.push_back(record);
        }
        return 1;
    }
    ResultCode ReadRecordData(const FileRecord* record,
                              std::filesystem::path& path,
                              std::uint8_t* buffer,
                              std::uint32_t& size,
                              PreviewProgressCallback progress,
                              void* context) override
    {
        const ResultCode fault = m_script.restores ? m_script.restores(*record) : ResultSuccess;
        size = std::min(size, static_cast<std::uint32_t>(m_script.content.size()));
        std::copy_n(m_script.content.begin(), size, buffer);
        path = "tmp.jpg";
        return progress(context, 50, fault);
    }

private:
    void Begin() const
    {
        if (m_script.begins) {
            m_script.begins();
        }
    }

    FakeScript& m_script;
    ProgressCallback m_scan = nullptr;
    FileProgressCallback m_file = nullptr;
    void* m_context = nullptr;
    SearchProgressCallback m_search = nullptr;
    void* m_searchContext = nullptr;
};

class FakeEngines : public IEngineMaker
{
public:
    explicit FakeEngines(FakeScript& script) : m_script(script) {}
    std::unique_ptr<IFileRecoveryParse> Make(const EngineTarget& /*target*/,
                                             ScanDepth depth,
                                             const std::shared_ptr<ScanLogDirectory>& /*log*/,
                                             ResultCode* outWhy) override
    {
        m_script.depths.push_back(depth);
        *outWhy = m_script.opens;
        return m_script.opens == ResultSuccess && m_script.recognised
                   ? std::make_unique<FakeEngine>(m_script)
                   : nullptr;
    }

private:
    FakeScript& m_script;
};
