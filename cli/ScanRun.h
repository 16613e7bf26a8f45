// What scan, list and recover have in common: one target from its opening to what was found on it, with what a person is
// told and asked on the way. A disk or an image with a table of partitions is scanned part by part.
#pragma once

#include "cli/Cancel.h"
#include "cli/Command.h"
#include "cli/ProgressLine.h"
#include "session/Session.h"
#include "session/TargetContent.h"
#include "session/TargetParts.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

enum class PartState
{
    NotOpened,  // or nothing there that a quick scan could read
    NotScanned,
    Scanned,  // see outcome
    Failed
};

// A partition or gap, or the target as one piece.
struct ScanPart
{
    std::optional<TargetRow> row;  // none for one piece
    ScanTarget target;
    TargetContent content;
    std::shared_ptr<ScanSession> source;  // null with NotOpened
    PartState state = PartState::NotOpened;
    bool isMissing = false;  // of what was asked for: neither opened nor scanned to its end
    ScanOutcome outcome;
    std::uint64_t files = 0;  // that the filter accepts
};

// The options and streams outlive it. While it lives, Ctrl-C cancels its work.
class ScanRun
{
public:
    ScanRun(const CommandOptions& options, CommandStreams& streams, Session& session);
    ScanRun(const ScanRun&) = delete;
    ScanRun& operator=(const ScanRun&) = delete;
    ~ScanRun();

    // Opens the target: what can be refused is refused before anything is written.
    [[nodiscard]] std::optional<Refusal> OpenTarget();
    // Scans it. A cancelled scan is no refusal: what was found until then stands.
    [[nodiscard]] std::optional<Refusal> Scan();
    // What the filter accepts of all that was found, sorted within each part.
    [[nodiscard]] std::optional<Refusal> Search(const TypeFilter& filter);
    // All of it.
    [[nodiscard]] std::optional<Refusal> OpenAndFind(const TypeFilter& filter);

    bool Cancelled() const { return m_cancelled || CancelScope::Requested(); }
    // What the command ends with when nothing else went wrong: a scan that is not whole is no success.
    ExitStatus Status() const;
    // The sum of all parts.
    ScanOutcome Scanned() const;
    // The target as a whole.
    const ScanTarget& Target() const { return m_target; }
    bool HasParts() const { return m_parts.size() > 1 || (!m_parts.empty() && m_parts[0].row); }
    const std::vector<ScanPart>& Parts() const { return m_parts; }
    const std::vector<std::shared_ptr<ScanSession>>& Sources() const { return m_sources; }
    // The part that a row was found in.
    const ScanPart& PartOf(const FoundRow& row) const;
    const std::vector<FoundRow>& Rows() const { return m_rows; }
    // That were found and left out, as other rows show the same files.
    std::uint64_t Doubles() const { return m_doubles; }
    ProgressLine& Line() { return m_line; }

    // Writes a sentence to standard error: what was lost is told whatever the options say.
    void Warn(const std::string& sentence);
    // The same unless --quiet.
    void Note(const std::string& sentence);

private:
    void FindParts();
    std::optional<Refusal> CheckRecords();
    std::optional<Refusal> OpenPart(ScanPart& part);
    std::optional<Refusal> TakeOutcome(ScanPart& part);
    Refusal WhyFailed(const ScanPart& part) const;
    Answer OnProgress(const Progress& progress, const ScanPart& part);
    bool ChooseEarlierScans();
    EarlierChoice ChoiceFor(const ScanPart& part, bool goesOn);
    bool AskToResume(const std::string& scans);
    void TellLosses();
    // "Part 2 (partition, FAT32): " before a sentence about a part; nothing for one piece.
    std::string About(const ScanPart& part) const;
    bool GoesOn() const;

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    Session& m_session;
    CancelScope m_cancel;
    ProgressLine m_line;
    Pace m_pace;
    ScanTarget m_target;
    std::vector<ScanPart> m_parts;
    std::vector<std::shared_ptr<ScanSession>> m_sources;  // of the parts that were opened
    std::vector<FoundRow> m_rows;
    std::uint64_t m_doubles = 0;
    bool m_cancelled = false;
    bool m_interrupted = false;
};
