// lumivault-cli list: one line for each found file.
#include "cli/FileReport.h"
#include "cli/ScanRun.h"
#include "cli/TextForms.h"
#include "cli/Words.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iomanip>
#include <ostream>

namespace {

void AddOptions(CLI::App& app, CommandOptions& options)
{
    AddScanOptions(app, options);
    AddTypesOption(app, options);
    AddJsonOption(app, options);
}

std::string TimeColumn(std::uint64_t fileTime)
{
    const std::string text = TimeText(fileTime);
    return text.empty() ? "-" : text;
}

void WriteLine(std::ostream& out, const ReportedFile& file)
{
    if (file.part != 0) {
        out << std::left << std::setw(5) << "#" + std::to_string(file.part);
    }
    const FileRecord& record = file.row.record;
    std::string path = file.folderPath + std::string(record.NameText());
    std::replace(path.begin(), path.end(), '\\', '/');
    out << std::right << std::setw(12) << record.FileSize << std::left << "  " << std::setw(20)
        << TimeColumn(record.WriteTime) << std::setw(20) << TimeColumn(record.CreationTime)
        << std::setw(20) << TimeColumn(record.AccessTime) << std::setw(5)
        << (record.HeadIntact != 0 ? "ok" : "lost") << file.store << '#' << std::setw(7)
        << record.RecordNumber << ' ' << Printable(path);
    if (const std::optional<StorePlace>& shown = file.row.doubleOf) {
        out << "  (double of " << file.doubleStore << '#' << shown->place << ')';
    }
    out << '\n';
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const std::variant<TypeFilter, Refusal> types = FilterOf(options.types);
    if (const auto* const wrong = std::get_if<Refusal>(&types)) {
        return Refuse(*wrong, streams);
    }
    const auto& filter = std::get<TypeFilter>(types);
    ScanRun run(options, streams, session);
    if (const std::optional<Refusal> refusal = run.OpenAndFind(filter)) {
        return Refuse(*refusal, streams);
    }
    const std::vector<FoundRow>& rows = run.Rows();
    std::optional<JsonReport> report;
    if (options.json) {
        report.emplace(streams.out, options.target);
    } else if (!rows.empty()) {
        streams.out
            << (run.HasParts() ? "Part " : "")
            << "        Size  Written             Created             Accessed            Head "
               "Store#Record  Path\n";
    }
    for (const FoundRow& row : rows) {
        const ReportedFile file = ReportOf(row, run);
        if (report) {
            report->Add(file);
        } else {
            WriteLine(streams.out, file);
        }
    }
    if (report) {
        report->Finish(run);
    }
    run.Note(CountText(rows.size(), "file") + " of the types asked for.");
    return run.Status();
}

}  // namespace

const Command ListCommand = {"list", "scan a target and list the found files",
                             "  lumivault-cli list card.img --types jpg,mp4\n"
                             "  lumivault-cli list 'disk.img#2' --types jpg\n"
                             "  lumivault-cli list card.img --types all --json\n",
                             &AddOptions, &Run};
