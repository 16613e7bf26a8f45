#include "cli/ScanRun.h"

#include "cli/TextForms.h"
#include "cli/Words.h"

#include <algorithm>
#include <iterator>
#include <ostream>

namespace {

ScanDepth DepthOf(const CommandOptions& options)
{
    if (options.fast) {
        return ScanDepth::Quick;
    }
    return options.whole ? ScanDepth::Whole : ScanDepth::Deep;
}

// What a quick scan cannot read is told of; that there is nothing to read between two partitions is no news.
bool IsExpected(const Refusal& refusal, const ScanPart& part, const CommandOptions& options)
{
    return options.fast && part.row && part.row->kind == TargetKind::Gap &&
           refusal.status == ExitStatus::TargetFailed;
}

}  // namespace

ScanRun::ScanRun(const CommandOptions& options, CommandStreams& streams, Session& session)
    : m_options(options), m_streams(streams), m_session(session), m_line(streams, options.quiet)
{
}

ScanRun::~ScanRun() = default;

void ScanRun::Warn(const std::string& sentence)
{
    m_line.Clear();
    m_streams.err << sentence << '\n';
}

void ScanRun::Note(const std::string& sentence)
{
    if (!m_options.quiet) {
        Warn(sentence);
    }
}

std::string ScanRun::About(const ScanPart& part) const
{
    return part.row ? NameOfPart(*part.row) + ": " : std::string();
}

// Asked before the lock, which is a file there already.
std::optional<Refusal> ScanRun::CheckRecords()
{
    const std::filesystem::path records = m_session.History().RecordsFolder();
    if (m_session.History().LiesOn(m_target) &&
        !Ask("Scan records would be written to " + Printable(records.string()) +
                 ", which lies on the source itself, and may overwrite deleted files (--data-dir "
                 "DIR on another disk avoids that). Write them there all the same?",
             m_streams)) {
        return WhyNoRecordsIn(records);
    }
    return std::nullopt;
}

void ScanRun::FindParts()
{
    const TargetParts parts =
        m_options.asOnePiece ? TargetParts() : PartsOf(m_target, PartFacts::Places);
    for (const TargetRow& row : parts.rows) {
        ScanPart& part = m_parts.emplace_back();
        part.row = row;
        part.target = TargetOfPart(m_target, row);
    }
    if (m_parts.empty()) {
        m_parts.emplace_back().target = m_target;
    }
}

std::optional<Refusal> ScanRun::OpenTarget()
{
    const ResolvedTarget resolved = m_session.Resolve(m_options.target);
    if (const auto* refusal = std::get_if<TargetRefusal>(&resolved)) {
        return WhyNot(*refusal);
    }
    m_target = std::get<ScanTarget>(resolved);
    if (std::optional<Refusal> refusal = CheckRecords()) {
        return refusal;
    }
    FindParts();
    std::optional<Refusal> first;
    for (ScanPart& part : m_parts) {
        std::optional<Refusal> refusal = OpenPart(part);
        if (!refusal) {
            m_sources.push_back(part.source);
            continue;
        }
        if (!part.row || refusal->status != ExitStatus::TargetFailed) {
            return refusal;
        }
        part.isMissing = !IsExpected(*refusal, part, m_options);
        if (part.isMissing) {
            Warn(refusal->sentence);
            first = first ? first : refusal;
        }
    }
    if (m_sources.empty()) {
        return first ? first
                     : WhyNot(TargetRefusal{TargetFault::UnknownFileSystem, m_options.target});
    }
    return std::nullopt;
}

std::optional<Refusal> ScanRun::OpenPart(ScanPart& part)
{
    part.content = ContentOf(part.target);
    OpenOutcome opened = m_session.Open(part.target, DepthOf(m_options));
    if (opened.end == OpenEnd::NotLocked) {
        return WhyNot(opened.lock);
    }
    if (opened.end == OpenEnd::Refused) {
        opened.refusal.name = part.row ? NameOfPart(*part.row) : m_options.target;
        opened.refusal.isImage = m_target.IsImage();
        return opened.refusal.fault == TargetFault::UnknownFileSystem
                   ? WhyNotQuick(opened.refusal, part.content)
                   : WhyNot(opened.refusal);
    }
    part.source = std::move(opened.session);
    part.state = PartState::NotScanned;
    if (const std::string words = WordsFor(part.content, m_options.fast); !words.empty()) {
        Note(About(part) + words);
    }
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

bool ScanRun::GoesOn() const
{
    return !m_cancelled && !m_interrupted;
}

std::optional<Refusal> ScanRun::Scan()
{
    const bool goesOn = ChooseEarlierScans();
    std::optional<Refusal> first;
    bool anyScanned = false;
    for (ScanPart& part : m_parts) {
        if (part.source == nullptr) {
            continue;
        }
        if (!GoesOn()) {
            part.isMissing = true;
            continue;
        }
        const EarlierChoice choice = ChoiceFor(part, goesOn);
        part.outcome = part.source->Scan(
            choice, [this, &part](const Progress& progress) { return OnProgress(progress, part); });
        if (std::optional<Refusal> refusal = TakeOutcome(part)) {
            if (!part.row) {
                return refusal;
            }
            Warn(refusal->sentence);
            first = first ? first : refusal;
            continue;
        }
        anyScanned = true;
    }
    if (!anyScanned && first) {
        return first;
    }
    TellLosses();
    return std::nullopt;
}

Answer ScanRun::OnProgress(const Progress& progress, const ScanPart& part)
{
    if (CancelScope::Requested()) {
        m_line.Show("stopping ...");
        return Answer::Stop;
    }
    if (!m_line.IsDue()) {
        return Answer::GoOn;
    }
    Progress shown = progress;
    std::string name;
    if (part.row) {
        std::uint64_t before = 0;
        std::uint64_t all = 0;
        for (const ScanPart& one : m_parts) {
            before += &one < &part ? one.target.sectorCount : 0;
            shown.found += &one < &part ? one.outcome.found : 0;
            all += one.target.sectorCount;
        }
        const double share = static_cast<double>(progress.percent) / 100;
        const double done =
            static_cast<double>(before) + static_cast<double>(part.target.sectorCount) * share;
        shown.percent = static_cast<std::int32_t>(done * 100 / static_cast<double>(all));
        shown.secondsLeft = -1;  // that of the part says nothing of the whole
        name = "part " + std::to_string(unsigned{part.row->number}) + " of " +
               std::to_string(m_parts.size());
    }
    ProgressFigures figures = FiguresOf("Scanning", shown, part.target.sectorSize, m_pace);
    figures.count = std::to_string(shown.found) + " found";
    figures.place = name;
    constexpr std::int32_t PercentThatTell = 10;
    if (part.row && figures.percent >= PercentThatTell) {
        figures.leftSeconds = figures.elapsedSeconds * (100 - figures.percent) / figures.percent;
    }
    m_line.Show(ProgressText(figures, m_line.Columns()));
    return Answer::GoOn;
}

// Earlier scans of the target or its parts that stand in the log: whether they are resumed, or dropped.
bool ScanRun::ChooseEarlierScans()
{
    std::vector<const EarlierScan*> scans;
    for (const ScanPart& part : m_parts) {
        if (part.source != nullptr && part.source->Earlier()) {
            scans.push_back(&*part.source->Earlier());
        }
    }
    if (scans.empty()) {
        if (m_options.resume) {
            Note("No earlier scan of this target stands in the log, or the target has changed "
                 "since; scanning anew.");
        }
        return true;
    }
    if (m_options.resume || m_options.againUnread || m_options.fresh) {
        return !m_options.fresh;
    }
    return AskToResume(HasParts() ? "of " + CountText(scans.size(), "part") + " of " +
                                        std::to_string(m_parts.size())
                                  : DescribeScan(*scans.front()));
}

EarlierChoice ScanRun::ChoiceFor(const ScanPart& part, bool goesOn)
{
    const std::optional<EarlierScan>& earlier = part.source->Earlier();
    if (!earlier) {
        return EarlierChoice::GoOn;
    }
    const std::string scan = DescribeScan(*earlier);
    if (m_options.againUnread && earlier->state == EarlierState::Complete) {
        Note(About(part) + "Reading what an earlier scan (" + scan + ") could not read.");
        return EarlierChoice::ReadAgain;
    }
    if (!goesOn) {
        return EarlierChoice::Drop;
    }
    Note(About(part) +
         (earlier->state == EarlierState::Complete ? "Taking the results of an earlier scan ("
                                                   : "Going on with an earlier scan (") +
         scan + "); --new scans anew.");
    return EarlierChoice::GoOn;
}

// With nobody to ask the answer is yes.
bool ScanRun::AskToResume(const std::string& scans)
{
    if (m_streams.answers == nullptr) {
        return true;
    }
    const std::string answer = ReadAnswer("An earlier scan of this target stands in the log (" +
                                              scans + "). Go on with it? [Y/n] ",
                                          m_streams);
    return answer.empty() || (answer.front() != 'n' && answer.front() != 'N');
}

const ScanPart& ScanRun::PartOf(const FoundRow& row) const
{
    const auto found = std::find_if(m_parts.begin(), m_parts.end(), [&row](const ScanPart& part) {
        return part.source != nullptr && part.target.letter == row.record.DriveLetter;
    });
    return found != m_parts.end() ? *found : m_parts.front();
}

std::optional<Refusal> ScanRun::Search(const TypeFilter& filter)
{
    for (ScanPart& part : m_parts) {
        if (part.state != PartState::Scanned) {
            continue;
        }
        SearchOutcome outcome = part.source->Search(filter);
        if (outcome.fault != ResultSuccess) {
            return WhyBroken(outcome.fault);
        }
        if (!m_options.doubles) {
            m_doubles += std::erase_if(
                outcome.rows, [](const FoundRow& row) { return row.doubleOf.has_value(); });
        }
        part.files = outcome.rows.size();
        if (m_rows.empty()) {
            m_rows = std::move(outcome.rows);  // held once: there can be many
        } else {
            m_rows.insert(m_rows.end(), outcome.rows.begin(), outcome.rows.end());
        }
    }
    if (m_doubles != 0) {
        Note(CountText(m_doubles, "file") + " found a second time in another way " +
             (m_doubles == 1 ? "is" : "are") + " left out; --doubles shows " +
             (m_doubles == 1 ? "it." : "them."));
    }
    return std::nullopt;
}
