// Runs a deep scan inside a test and says what it found, by folder path and content.
#pragma once

#include "recovery/deep/ProfessionalRecovery.h"
#include "recovery/engines/RecoveryEngineFactory.h"
#include "tests/support/TempFolder.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

// What a callback sees of a pass.
struct DeepProgress
{
    std::int32_t progress = 0;
    std::int32_t range = 0;
    std::uint64_t doneSectors = 0;
    std::uint64_t totalSectors = 0;
};

// One scan of one image. The application-data folder is the caller's.
class DeepRun
{
public:
    // Null opens nothing. Whole targets have no quick engine.
    explicit DeepRun(const std::filesystem::path& image, ScanDepth depth = ScanDepth::Deep);

    CProfessionalRecovery& Engine() { return *m_engine; }
    // decide, when given, answers each report; non-zero stops the scan.
    ResultCode Scan(std::function<ResultCode(const DeepProgress&)> decide = nullptr);
    // "folder/name" (as GetRecordPath has it, with "/") to the restored bytes, of all that a search for everything finds.
    // Equal paths keep the first.
    std::map<std::string, ByteVector> Restore();
    FileRecordList Search(std::string_view pattern = AllFilesPattern);
    // Of each found file what a preview brings, as far as it shows the same bytes as a restore: "same", or what differs. By
    // the kind of the engine that found the file.
    std::map<std::uint32_t, std::set<std::string>> ComparePreviews();
    // The bytes of the four main files and their indexes, by name without the time in it.
    std::map<std::string, ByteVector> StoreBytes() const;

private:
    static ResultCode OnProgress(void* context,
                                 std::int32_t progress,
                                 std::int32_t range,
                                 std::int32_t secondsLeft,
                                 std::uint64_t doneSectors,
                                 std::uint64_t totalSectors,
                                 std::uint64_t filesFound,
                                 std::uint32_t reserved);

    std::unique_ptr<IFileRecoveryParse> m_owner;
    CProfessionalRecovery* m_engine = nullptr;
    std::function<ResultCode(const DeepProgress&)> m_decide;
};
