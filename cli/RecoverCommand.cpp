// lumivault-cli recover: scan, search, restore.
#include "cli/FileReport.h"
#include "cli/ScanRun.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Text.h"
#include "session/RestoreFiles.h"

#include <CLI/CLI.hpp>

#include <array>
#include <ostream>

namespace {

void AddOptions(CLI::App& app, CommandOptions& options)
{
    AddScanOptions(app, options);
    app.add_option("FOLDER", options.folder, "where the files go, on another disk")->required();
    AddTypesOption(app, options);
    app.add_flag("--tree", options.tree,
                 "keep the folders that the files had, in place of photo, audio, ...");
    app.add_flag("--force", options.force,
                 "restore onto the source itself, over other deleted files");
    AddJsonOption(app, options);
}

constexpr std::size_t ShownNameBytes = 40;  // a line that wraps could not be rewritten

// One run of the command behind the search.
class Restorer
{
public:
    Restorer(const CommandOptions& options, CommandStreams& streams, ScanRun& run)
        : m_options(options), m_streams(streams), m_run(run)
    {
        if (options.json) {
            m_report.emplace(streams.out, options.target);
        }
    }

    ExitStatus Run(Destination& destination);

private:
    Answer OnProgress(const RestoreProgress& progress);
    void OnFile(const FoundRow& row, const FileOutcome& outcome);
    ExitStatus Finish(const RestoreOutcome& outcome, const std::filesystem::path& folder);

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    ScanRun& m_run;
    std::optional<JsonReport> m_report;
};

Answer Restorer::OnProgress(const RestoreProgress& progress)
{
    if (m_run.Cancelled()) {
        return Answer::Stop;
    }
    if (!progress.path.empty() && m_run.Line().IsDue()) {
        m_run.Line().Show("Restoring " + std::to_string(progress.number) + " of " +
                          std::to_string(progress.total) + ", " + std::to_string(progress.percent) +
                          "% of " +
                          Printable(CutName(progress.path.filename().string(), ShownNameBytes)));
    }
    return Answer::GoOn;
}

// What was found is listed whole, also where it was not restored.
void Restorer::OnFile(const FoundRow& row, const FileOutcome& outcome)
{
    std::string error;
    if (outcome.end == FileEnd::Failed) {
        error = ErrorText(outcome.why);
    } else if (outcome.end == FileEnd::Cancelled) {
        error = "Cancelled before its end.";
    }
    if (m_report) {
        ReportedFile file = ReportOf(row, *m_run.Source());
        file.restoredTo = outcome.written ? outcome.path : std::filesystem::path();
        file.error = error;
        m_report->Add(file);
    }
    if (!error.empty()) {
        m_run.Line().Clear();
        m_streams.err << Printable(outcome.path.string()) << ": " << error << '\n';
    }
}

ExitStatus Restorer::Run(Destination& destination)
{
    const RestoreCalls calls = {
        [this](const RestoreProgress& progress) { return OnProgress(progress); },
        [this](ScanSession* /*source*/, const FoundRow& row, const FileOutcome& outcome) {
            OnFile(row, outcome);
        }};
    const std::array sources = {m_run.Source()};
    const RestoreOutcome outcome = RestoreFiles(sources, m_run.Rows(), destination, calls);
    m_run.Line().Clear();
    if (outcome.fault != ResultSuccess) {
        return Refuse(WhyBroken(outcome.fault), m_streams);
    }
    return Finish(outcome, destination.Folder());
}

ExitStatus Restorer::Finish(const RestoreOutcome& outcome, const std::filesystem::path& folder)
{
    const std::size_t found = m_run.Rows().size();
    const bool cancelled = m_run.Cancelled();
    if (m_report) {
        m_report->SetScan(m_run.Scanned());
        m_report->Finish(cancelled);
    } else if (!m_options.quiet) {
        m_streams.out << CountText(found, "file") << " found, " << outcome.restored
                      << " restored into " << Printable(folder.string()) << ", " << outcome.failed
                      << " failed.\n";
    }
    if (found == 0 && !cancelled) {
        m_run.Note("Nothing of the types " + m_options.types +
                   " was found; --types all shows every file, 'lumivault-cli scan' what there is.");
    }
    if (cancelled) {
        if (outcome.restored + outcome.failed != 0) {
            m_run.Note("Cancelled; what was restored until then is kept.");
        }
        return ExitStatus::Cancelled;
    }
    return outcome.failed != 0 ? ExitStatus::SomeFailed : m_run.Status();
}

// Makes the folder, where nothing speaks against it or somebody says yes to what does.
std::optional<Refusal> Prepare(const Destination& destination,
                               const ScanTarget& source,
                               const CommandOptions& options,
                               CommandStreams& streams)
{
    const DestinationFault place =
        options.force ? DestinationFault::None : destination.CheckPlace(source);
    const bool allowed =
        place == DestinationFault::None ||
        (place == DestinationFault::MayBeOnSource &&
         Ask("The system does not tell whether " + Printable(destination.Folder().string()) +
                 " lies on the source itself. Restore there all the same?",
             streams));
    const DestinationCheck check = allowed ? destination.Make() : DestinationCheck{place};
    return check.fault == DestinationFault::None
               ? std::nullopt
               : std::optional(WhyNot(check, destination.Folder()));
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const std::optional<TypeFilter> filter = TypeFilter::Parse(options.types);
    if (!filter) {
        return Refuse(WhyNoTypes(options.types), streams);
    }
    Destination destination(options.folder, options.tree ? Layout::ByTree : Layout::ByCategory);
    ScanRun run(options, streams, session);
    std::optional<Refusal> refusal = run.OpenTarget();
    if (!refusal) {
        refusal = Prepare(destination, run.Source()->Target(), options, streams);
    }
    if (!refusal) {
        refusal = run.Scan();
    }
    if (!refusal) {
        refusal = run.Search(*filter);
    }
    return refusal ? Refuse(*refusal, streams) : Restorer(options, streams, run).Run(destination);
}

}  // namespace

const Command RecoverCommand = {
    "recover", "scan a target and restore the found files into a folder",
    "  lumivault-cli recover card.img ./recovered\n"
    "  sudo lumivault-cli recover /dev/sdb1 ./recovered --types photo,pdf --tree\n"
    "  lumivault-cli recover card.img ./recovered --types all --json\n",
    &AddOptions, &Run};
