// What scan, list and recover have in common: one target from its opening to what was found on it, with what a person is
// told and asked on the way.
#pragma once

#include "cli/Cancel.h"
#include "cli/Command.h"
#include "cli/ProgressLine.h"
#include "session/Session.h"

#include <memory>

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
    // What the filter accepts of all that was found, sorted.
    [[nodiscard]] std::optional<Refusal> Search(const TypeFilter& filter);
    // All of it.
    [[nodiscard]] std::optional<Refusal> OpenAndFind(const TypeFilter& filter);

    bool Cancelled() const { return m_cancelled || CancelScope::Requested(); }
    // What the command ends with when nothing else went wrong: a scan that is not whole is no success.
    ExitStatus Status() const;
    const ScanOutcome& Scanned() const { return m_scanned; }
    const std::shared_ptr<ScanSession>& Source() const { return m_source; }
    const std::vector<FoundRow>& Rows() const { return m_rows; }
    ProgressLine& Line() { return m_line; }

    // Writes a sentence to standard error unless --quiet.
    void Note(const std::string& sentence);

private:
    EarlierChoice ChooseEarlierScan();
    bool AskToResume(const std::string& scan);
    void TellLosses();

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    Session& m_session;
    CancelScope m_cancel;
    ProgressLine m_line;
    std::shared_ptr<ScanSession> m_source;
    std::vector<FoundRow> m_rows;
    ScanOutcome m_scanned;
    bool m_cancelled = false;
};
