// One target from its opening to what was found on it.
#pragma once

#include "recovery/FoundRow.h"
#include "recovery/ScanDepth.h"
#include "session/Progress.h"
#include "session/ScanHistory.h"
#include "session/ScanTarget.h"
#include "session/TypeFilter.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class IEngineMaker;
struct OpenOutcome;

// What to do with an earlier scan of the target.
enum class EarlierChoice
{
    GoOn,
    Drop,
    ReadAgain  // only what it could not read; for a complete one
};

enum class ScanEnd
{
    Complete,
    Stopped,        // by the face; what was found until then stands
    StoppedAtOnce,  // the same, and the log does not know of it
    Interrupted,    // the source went away
    Incomplete,     // it met a fault, see why; what was found stands
    Failed,         // it met a fault and found nothing
    Broken          // see why: memory ran out, or worse
};

struct ScanOutcome
{
    ScanEnd end = ScanEnd::Complete;
    ResultCode why = ResultSuccess;
    std::uint64_t found = 0;
    bool canGoOn = false;  // it stands in the log
    // Records that could not be written, and why: they are missing from all that follows. With a reason and no number only
    // folders may be missing.
    std::uint64_t lostRecords = 0;
    ResultCode whyLost = ResultSuccess;
    // Why the quick stage of a deep scan failed. The scan ended there unless it was to read all sectors.
    ResultCode quickFault = ResultSuccess;
    // Sectors that could not be read, and in how many places.
    std::uint64_t unreadSectors = 0;
    std::uint64_t unreadPlaces = 0;
};

struct SearchOutcome
{
    ResultCode fault = ResultSuccess;
    bool stopped = false;
    std::vector<FoundRow> rows;  // sorted; those that another one shows too say so in doubleOf
};

struct PreviewOutcome
{
    ResultCode why = ResultSuccess;
    bool stopped = false;
    std::filesystem::path file;  // a picture, sound or clip; removed by nobody but the next preview
    std::vector<std::uint8_t> bytes;  // the head of anything else
};

// percent of the file at path; error is what the engine has met in it.
using FileProgressFunction = std::function<Answer(
    std::int32_t percent, ResultCode error, const std::filesystem::path& path)>;

// Holds the engine, and the lock on the scan records. One thread at a time uses it; shared, so that a task that runs keeps it
// when a face lets go of it. What goes wrong stands in the outcomes: nothing is thrown.
class ScanSession
{
public:
    // Takes the lock and makes the engine; nothing but the lock is written.
    static OpenOutcome Open(std::shared_ptr<ScanHistory> history,
                            IEngineMaker& engines,
                            const ScanTarget& target,
                            ScanDepth depth);
    ScanSession(const ScanSession&) = delete;
    ScanSession& operator=(const ScanSession&) = delete;
    ~ScanSession();

    const ScanTarget& Target() const;
    // An earlier scan of the target that Scan would go on with: a question to ask before.
    const std::optional<EarlierScan>& Earlier() const;
    // The choice means nothing where there is no earlier scan.
    ScanOutcome Scan(EarlierChoice choice, const ProgressFunction& progress);

    // Files and folders that were found, those of an earlier scan that was resumed included.
    std::uint64_t RecordCount() const;
    // The target as so many letters, now and at any later time: ? not read, 1 to 8 in part, + read, F with files; - could not
    // be read, ! with files too. Any thread may call what is given, which may be null.
    std::function<std::string(std::size_t cells)> Strip() const;

    // What the filter accepts of all that was found.
    SearchOutcome Search(const TypeFilter& filter, const ProgressFunction& progress = {});
    // What the pattern takes, as the engines read it: an extension is looked for in it as plain text.
    SearchOutcome Search(std::string_view pattern, const ProgressFunction& progress = {});
    // The folders above a record, each followed by "\"; as far as the chain leads.
    std::string FolderPath(const FileRecord& record) const;
    // The name of the record file of that store; empty when it is not known.
    const std::string& StoreName(std::uint32_t store) const;

    // Writes a file to a path that nothing has. baseDepth is the number of separators in the destination's root.
    ResultCode Restore(const FileRecord& record,
                       const std::filesystem::path& path,
                       std::uint32_t baseDepth,
                       const FileProgressFunction& progress);
    // The first bytes of any file, also of one that Preview() would write to a file.
    PreviewOutcome
    ReadBytes(const FileRecord& record, std::uint32_t mostBytes, const ProgressFunction& progress);
    PreviewOutcome
    Preview(const FileRecord& record, std::uint32_t mostBytes, const ProgressFunction& progress);

private:
    struct Parts;
    explicit ScanSession(std::unique_ptr<Parts> parts);
    template <class Accept>
    SearchOutcome
    SearchWhere(std::string_view pattern, const ProgressFunction& progress, const Accept& accept);

    std::unique_ptr<Parts> m_parts;
};

enum class OpenEnd
{
    Opened,
    NotLocked,  // see lock
    Refused     // see refusal
};

struct OpenOutcome
{
    OpenEnd end = OpenEnd::Opened;
    std::shared_ptr<ScanSession> session;
    LockOutcome lock;
    TargetRefusal refusal;
};
