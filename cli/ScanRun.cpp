#include "cli/ScanRun.h"

#include "cli/TextForms.h"
#include "cli/Words.h"

#include <ostream>

namespace {

ScanDepth DepthOf(const CommandOptions& options)
{
    if (options.fast) {
        return ScanDepth::Quick;
    }
    return options.whole ? ScanDepth::Whole : ScanDepth::Deep;
}

}  // namespace

ScanRun::ScanRun(const CommandOptions& options, CommandStreams& streams, Session& session)
    : m_options(options),
      m_streams(streams),
      m_session(session),
      m_line(streams.err, streams.errIsTerminal && !options.quiet)
{
}

ScanRun::~ScanRun() = default;

void ScanRun::Note(const std::string& sentence)
{
    m_line.Clear();
    if (!m_options.quiet) {
        m_streams.err << sentence << '\n';
    }
}

std::optional<Refusal> ScanRun::OpenTarget()
{
    const ResolvedTarget resolved = m_session.Resolve(m_options.target);
    if (const auto* refusal = std::get_if<TargetRefusal>(&resolved)) {
        return WhyNot(*refusal);
    }
    const ScanTarget& target = std::get<ScanTarget>(resolved);
    // Asked in front of the lock, which is a file there already.
    const std::filesystem::path records = m_session.History().RecordsFolder();
    if (m_session.History().LiesOn(target) &&
        !Ask("Scan records would be written to " + Printable(records.string()) +
                 ", which lies on the source itself, and may overwrite deleted files (--data-dir "
                 "DIR on another disk avoids that). Write them there all the same?",
             m_streams)) {
        return WhyNoRecordsIn(records);
    }
    OpenOutcome opened = m_session.Open(target, DepthOf(m_options));
    if (opened.end == OpenEnd::NotLocked) {
        return WhyNot(opened.lock);
    }
    if (opened.end == OpenEnd::Refused) {
        opened.refusal.name = m_options.target;
        return WhyNot(opened.refusal);
    }
    m_source = std::move(opened.session);
    return std::nullopt;
}

std::optional<Refusal> ScanRun::OpenAndFind(const TypeFilter& filter)
{
    std::optional<Refusal> refusal = OpenTarget();
    if (!refusal) {
        refusal = Scan();
    }
    return refusal ? refusal : Search(filter);
}

std::optional<Refusal> ScanRun::Scan()
{
    const EarlierChoice choice = ChooseEarlierScan();
    const ScanOutcome outcome = m_source->Scan(choice, [this](const Progress& progress) {
        if (CancelScope::Requested()) {
            m_line.Show("stopping ...");
            return Answer::Stop;
        }
        if (m_line.IsDue()) {
            m_line.Show(ScanText(progress));
        }
        return Answer::GoOn;
    });
    m_scanned = outcome;
    m_line.Clear();
    switch (outcome.end) {
    case ScanEnd::Complete:
        break;
    case ScanEnd::Stopped:
    case ScanEnd::StoppedAtOnce:  // what a second Ctrl-C does by ending the process
        m_cancelled = true;
        Note(outcome.canGoOn
                 ? "Cancelled; what was found until then is kept, and --resume goes on from there."
                 : "Cancelled; what was found until then is kept.");
        break;
    case ScanEnd::Interrupted:
        Note(std::string("The source went away while it was read") +
             (outcome.canGoOn ? "; put it back, and --resume goes on where it was." : "."));
        break;
    case ScanEnd::Incomplete:
        Note("Warning: the scan met a fault and may be incomplete: " + ErrorText(outcome.why));
        break;
    case ScanEnd::Failed:
        return Refusal{
            ExitStatus::TargetFailed,
            Printable(m_options.target) + ": it could not be scanned: " + ErrorText(outcome.why) +
                " Check the medium, or copy what can be read to an image and scan that."};
    case ScanEnd::Broken:
        return WhyBroken(outcome.why);
    }
    TellLosses();
    return std::nullopt;
}

void ScanRun::TellLosses()
{
    if (m_scanned.lostRecords != 0) {
        Note(CountText(m_scanned.lostRecords, "record") + " could not be saved and are missing: " +
             ErrorText(m_scanned.whyLost) + " Give --data-dir a folder with more room.");
    } else if (m_scanned.whyLost != ResultSuccess) {
        Note("Folders of some files could not be saved: " + ErrorText(m_scanned.whyLost));
    }
    if (m_scanned.unreadSectors != 0) {
        Note(CountText(m_scanned.unreadSectors, "sector") + " in " +
             CountText(m_scanned.unreadPlaces, "place") +
             " could not be read; --again-unread tries those again.");
    }
}

ExitStatus ScanRun::Status() const
{
    if (Cancelled()) {
        return ExitStatus::Cancelled;
    }
    const bool whole = m_scanned.unreadSectors == 0 && m_scanned.whyLost == ResultSuccess &&
                       m_scanned.end != ScanEnd::Interrupted;
    return whole ? ExitStatus::Done : ExitStatus::SomeFailed;
}

// An earlier scan of the target that stands in the log: gone on with, or dropped.
EarlierChoice ScanRun::ChooseEarlierScan()
{
    const std::optional<EarlierScan>& earlier = m_source->Earlier();
    if (!earlier) {
        if (m_options.resume) {
            Note("No earlier scan of this target stands in the log, or the target has changed "
                 "since; scanning anew.");
        }
        return EarlierChoice::GoOn;
    }
    const std::string scan = DescribeScan(*earlier);
    if (m_options.againUnread && earlier->state == EarlierState::Complete) {
        Note("Reading what an earlier scan (" + scan + ") could not read.");
        return EarlierChoice::ReadAgain;
    }
    if (m_options.fresh || (!m_options.resume && !AskToResume(scan))) {
        return EarlierChoice::Drop;
    }
    Note(earlier->state == EarlierState::Complete
             ? "Taking the results of an earlier scan (" + scan + "); --new scans anew."
             : "Going on with an earlier scan (" + scan + "); --new scans anew.");
    return EarlierChoice::GoOn;
}

// With nobody to ask the answer is yes.
bool ScanRun::AskToResume(const std::string& scan)
{
    if (m_streams.answers == nullptr) {
        return true;
    }
    const std::string answer = ReadAnswer("An earlier scan of this target stands in the log (" +
                                              scan + "). Go on with it? [Y/n] ",
                                          m_streams);
    return answer.empty() || (answer.front() != 'n' && answer.front() != 'N');
}

std::optional<Refusal> ScanRun::Search(const TypeFilter& filter)
{
    SearchOutcome outcome = m_source->Search(filter);
    if (outcome.fault != ResultSuccess) {
        return WhyBroken(outcome.fault);
    }
    m_rows = std::move(outcome.rows);
    return std::nullopt;
}
