// lumivault-cli recover: scan, search, restore.
#include "cli/Destination.h"
#include "cli/FileReport.h"
#include "cli/ScanSession.h"
#include "cli/TextForms.h"
#include "platform/Folders.h"
#include "platform/Text.h"
#include "recovery/RestoreSupport.h"

#include <CLI/CLI.hpp>

#include <exception>
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

// What the engine's callback needs while one file is written.
struct RestoreProgress
{
    ProgressLine& line;
    std::uint64_t number = 0;
    std::uint64_t total = 0;
};

ResultCode OnFileProgress(void* context,
                          std::int32_t percent,
                          std::int32_t /*range*/,
                          ResultCode error,
                          const std::filesystem::path& path)
{
    auto& progress = *static_cast<RestoreProgress*>(context);
    if (CancelScope::Requested()) {
        return ResultCancelled;
    }
    if (progress.line.IsDue()) {
        progress.line.Show("Restoring " + std::to_string(progress.number) + " of " +
                           std::to_string(progress.total) + ", " + std::to_string(percent) +
                           "% of " + Printable(CutName(path.filename().string(), ShownNameBytes)));
    }
    // The engine goes on with what is returned: a write error that is not given back counts as overcome.
    return error;
}

class Restorer
{
public:
    Restorer(const CommandOptions& options,
             CommandStreams& streams,
             ScanSession& session,
             Destination& destination)
        : m_options(options), m_streams(streams), m_session(session), m_destination(destination)
    {
        if (options.json) {
            m_report.emplace(streams.out, options.target);
        }
    }

    ExitStatus Run(const FileRecordList& records);

private:
    ResultCode RestoreOne(const FileRecord& record, const std::filesystem::path& path);
    void
    Tell(const FileRecord& record, const std::filesystem::path& path, const std::string& error);
    ExitStatus Finish(std::size_t found);

    const CommandOptions& m_options;
    CommandStreams& m_streams;
    ScanSession& m_session;
    Destination& m_destination;
    std::optional<JsonReport> m_report;
    std::uint64_t m_restored = 0;
    std::uint64_t m_failed = 0;
};

// Whatever goes wrong with one file must not end the others.
ResultCode Restorer::RestoreOne(const FileRecord& record, const std::filesystem::path& path)
{
    try {
        return m_session.Engine().RestoreRecord(&record, path,
                                                CountSeparators(m_destination.Folder()));
    } catch (const std::bad_alloc&) {
        return ResultOutOfMemory;
    } catch (const std::exception&) {
        return ResultGeneralFailure;
    }
}

void Restorer::Tell(const FileRecord& record,
                    const std::filesystem::path& path,
                    const std::string& error)
{
    const bool failed = !error.empty();
    (failed ? m_failed : m_restored) += 1;
    if (m_report) {
        m_report->Add({record, m_session.FolderPath(record), m_session.StoreName(record),
                       PathExists(path) ? path : std::filesystem::path(), error});
    }
    if (failed) {
        m_session.Line().Clear();
        m_streams.err << Printable(path.string()) << ": " << error << '\n';
    }
}

ExitStatus Restorer::Run(const FileRecordList& records)
{
    RestoreProgress progress{m_session.Line(), 0, records.size()};
    m_session.Engine().SetCallbacks(nullptr, &OnFileProgress, &progress, 100);
    for (const FileRecord& record : records) {
        if (m_session.Cancelled()) {
            // What was found is listed whole, also where it was not restored.
            if (m_report) {
                m_report->Add(
                    {record, m_session.FolderPath(record), m_session.StoreName(record), {}, {}});
            }
            continue;
        }
        ++progress.number;
        const std::string folderPath =
            m_options.tree ? m_session.FolderPath(record) : std::string();
        const std::filesystem::path path = m_destination.PathFor(record, folderPath);
        const ResultCode result = RestoreOne(record, path);
        Tell(record, path,
             result == ResultSuccess     ? ""
             : result == ResultCancelled ? "Cancelled before its end."
                                         : ErrorText(result));
    }
    m_session.Engine().SetCallbacks(nullptr, nullptr, nullptr, 100);
    return Finish(records.size());
}

ExitStatus Restorer::Finish(std::size_t found)
{
    const bool cancelled = m_session.Cancelled();
    m_session.Line().Clear();
    if (m_report) {
        m_report->Finish(cancelled);
    } else if (!m_options.quiet) {
        m_streams.out << CountText(found, "file") << " found, " << m_restored << " restored into "
                      << Printable(m_destination.Folder().string()) << ", " << m_failed
                      << " failed.\n";
    }
    if (found == 0 && !cancelled) {
        m_session.Note(
            "Nothing of the types " + m_options.types +
            " was found; --types all shows every file, 'lumivault-cli scan' what there is.");
    }
    if (cancelled) {
        if (m_restored + m_failed != 0) {
            m_session.Note("Cancelled; what was restored until then is kept.");
        }
        return ExitStatus::Cancelled;
    }
    return m_failed != 0 ? ExitStatus::SomeFailed : ExitStatus::Done;
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams)
{
    std::string problem;
    const std::optional<TypeFilter> filter = TypeFilter::Parse(options.types, problem);
    if (!filter) {
        return Refuse({ExitStatus::WrongUse, problem}, streams);
    }
    Destination destination(options.folder, options.tree);
    ScanSession session(options, streams);
    if (const std::optional<Refusal> refusal = session.OpenTarget()) {
        return Refuse(*refusal, streams);
    }
    if (const std::optional<Refusal> refusal =
            destination.Prepare(session.Target(), options.force, streams)) {
        return Refuse(*refusal, streams);
    }
    if (const std::optional<Refusal> refusal = session.Scan()) {
        return Refuse(*refusal, streams);
    }
    return Restorer(options, streams, session, destination).Run(session.Search(*filter));
}

}  // namespace

const Command RecoverCommand = {
    "recover", "scan a target and restore the found files into a folder",
    "  lumivault-cli recover card.img ./recovered\n"
    "  sudo lumivault-cli recover /dev/sdb1 ./recovered --types photo,pdf --tree\n"
    "  lumivault-cli recover card.img ./recovered --types all --json\n",
    &AddOptions, &Run};
