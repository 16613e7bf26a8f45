// lumivault-cli recover: scan, search, restore.
#include "cli/FileReport.h"
#include "cli/ScanRun.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Text.h"
#include "session/RestoreFiles.h"

#include <CLI/CLI.hpp>

#include <algorithm>
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
                 "restore onto the source itself, over other deleted files, and into a folder with "
                 "too little room");
    app.add_flag("--again", options.again,
                 "write files anew that an earlier run has left there, byte for byte the same");
    app.add_flag("--fill-unreadable", options.fillUnreadable,
                 "put zeros for what cannot be read, in place of ending the file there");
    AddJsonOption(app, options);
}

RestoreOptions OptionsOf(const CommandOptions& options)
{
    RestoreOptions out;
    out.skipsEqual = !options.again;
    out.stopsWhenFull = true;
    out.fillsUnreadable = options.fillUnreadable;
    return out;
}

constexpr std::size_t ShownNameBytes = 40;
constexpr std::uint64_t MostBytes = UINT64_MAX / 4;  // counted: a sum of wild sizes does not wrap

void AddBytes(std::uint64_t& sum, const FoundRow& row)
{
    const std::uint64_t size = row.record.FileSize;
    sum = std::min(sum + std::min(size, MostBytes), MostBytes);
}

// One run of the command after the search.
class Restorer
{
public:
    Restorer(const CommandOptions& options, CommandStreams& streams, ScanRun& run)
        : m_options(options), m_streams(streams), m_run(run)
    {
        if (options.json) {
            m_report.emplace(streams.out, options.target);
        }
        for (const FoundRow& row : run.Rows()) {
            AddBytes(m_totalBytes, row);
        }
    }

    ExitStatus Run(Destination& destination);

private:
    ProgressFigures FiguresOf(const RestoreProgress& progress);
    Answer OnProgress(const RestoreProgress& progress);
    void OnFile(const FoundRow& row, const FileOutcome& outcome);
    ExitStatus Finish(const RestoreOutcome& outcome, const std::filesystem::path& folder);
    void WriteSum(const RestoreOutcome& outcome, const std::filesystem::path& folder);

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    ScanRun& m_run;
    std::optional<JsonReport> m_report;
    Pace m_pace;
    std::uint64_t m_totalBytes = 0;
    std::uint64_t m_doneBytes = 0;
};

// Over all files, by their sizes; those of damaged records may be anything.
ProgressFigures Restorer::FiguresOf(const RestoreProgress& progress)
{
    const auto whole = static_cast<double>(m_totalBytes);
    const auto size = static_cast<double>(m_run.Rows()[progress.number - 1].record.FileSize);
    const double done =
        std::min(whole, static_cast<double>(m_doneBytes) + size * progress.percent / 100);
    ProgressFigures figures;
    figures.task = "Restoring";
    figures.percent = whole > 0 ? static_cast<std::int32_t>(done * 100 / whole) : 100;
    figures.doneBytes = static_cast<std::uint64_t>(done);
    figures.totalBytes = m_totalBytes;
    m_pace.Take(figures.doneBytes);
    figures.bytesPerSecond = m_pace.BytesPerSecond();
    figures.elapsedSeconds = m_pace.ElapsedSeconds();
    if (figures.bytesPerSecond != 0) {
        const double left = (whole - done) / static_cast<double>(figures.bytesPerSecond);
        figures.leftSeconds = static_cast<std::int32_t>(std::min(left, 1e9));
    }
    figures.count = std::to_string(progress.number) + " of " + CountText(progress.total, "file");
    figures.place = Printable(CutName(progress.path.filename().string(), ShownNameBytes));
    return figures;
}

Answer Restorer::OnProgress(const RestoreProgress& progress)
{
    if (m_run.Cancelled()) {
        return Answer::Stop;
    }
    if (!progress.path.empty() && m_run.Line().IsDue()) {
        m_run.Line().Show(ProgressText(FiguresOf(progress), m_run.Line().Columns()));
    }
    return Answer::GoOn;
}

// What was found is listed whole, also where it was not restored.
void Restorer::OnFile(const FoundRow& row, const FileOutcome& outcome)
{
    AddBytes(m_doneBytes, row);
    if (m_report) {
        m_report->Add(ReportOf(row, m_run, outcome));
    }
    if (const std::string error = WhatWentWrong(outcome); !error.empty()) {
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
    const RestoreOutcome outcome =
        RestoreFiles(m_run.Sources(), m_run.Rows(), destination, calls, OptionsOf(m_options));
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
        m_report->Finish(m_run, &outcome);
    } else if (!m_options.quiet) {
        WriteSum(outcome, folder);
    }
    if (outcome.full) {
        m_streams.err << "lumivault-cli: the destination is full; not tried: "
                      << CountText(outcome.notTried, "file") << ".\n";
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
    return outcome.failed + outcome.incomplete != 0 ? ExitStatus::SomeFailed : m_run.Status();
}

void Restorer::WriteSum(const RestoreOutcome& outcome, const std::filesystem::path& folder)
{
    m_streams.out << CountText(m_run.Rows().size(), "file") << " found, " << outcome.restored
                  << " restored into " << Printable(folder.string()) << ", " << outcome.failed
                  << " failed";
    if (outcome.incomplete != 0) {
        m_streams.out << ", " << outcome.incomplete << " incomplete";
    }
    if (outcome.wereThere != 0) {
        m_streams.out << ", " << outcome.wereThere << " skipped as an earlier run has left them";
    }
    m_streams.out << ".\n";
}

// Makes the folder, where nothing speaks against it or somebody says yes to what does.
std::optional<Refusal> Prepare(Destination& destination,
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

// Nothing where there is room, or somebody wants as many files as fit.
std::optional<Refusal> CheckRoom(const Destination& destination,
                                 const ScanRun& run,
                                 const CommandOptions& options,
                                 CommandStreams& streams)
{
    if (options.force || run.Cancelled()) {
        return std::nullopt;
    }
    const DestinationRoom room =
        RoomFor(run.Rows(), run.Sources(), destination, OptionsOf(options));
    const bool allowed =
        room.IsEnough() || Ask("The files need " + SizeText(room.neededBytes) + ", and " +
                                   Printable(destination.Folder().string()) + " has " +
                                   SizeText(room.freeBytes) + " free. Restore as many as fit?",
                               streams);
    return allowed ? std::nullopt : std::optional(WhyNot(room, destination.Folder()));
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const std::variant<TypeFilter, Refusal> types = FilterOf(options.types);
    if (const auto* const wrong = std::get_if<Refusal>(&types)) {
        return Refuse(*wrong, streams);
    }
    const auto& filter = std::get<TypeFilter>(types);
    Destination destination(options.folder, options.tree ? Layout::ByTree : Layout::ByCategory);
    ScanRun run(options, streams, session);
    std::optional<Refusal> refusal = run.OpenTarget();
    if (!refusal) {
        refusal = Prepare(destination, run.Target(), options, streams);
    }
    if (!refusal) {
        refusal = run.Scan();
    }
    if (!refusal) {
        refusal = run.Search(filter);
    }
    if (!refusal) {
        refusal = CheckRoom(destination, run, options, streams);
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
