// lumivault-cli scans: what stands in the log of earlier scans.
#include "cli/ScanLog.h"
#include "cli/TextForms.h"
#include "recovery/ScanLogDirectory.h"

#include <CLI/CLI.hpp>
#include <json/json.h>

#include <iomanip>
#include <ostream>

namespace {

void WriteJson(const std::vector<ScanLogEntry>& entries, std::ostream& out)
{
    Json::Value scans(Json::arrayValue);
    for (const ScanLogEntry& entry : entries) {
        Json::Value scan;
        scan["number"] = NumberOf(entry);
        scan["target"] = Printable(TargetOf(entry));
        scan["date"] = DateOf(entry);
        scan["state"] = StateOf(entry);
        scan["files"] = Json::UInt64{entry.filesFound};
        scan["bytes"] = Json::UInt64{BytesOf(entry)};
        scans.append(scan);
    }
    Json::Value whole;
    whole["scans"] = scans;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    out << Json::writeString(builder, whole) << '\n';
}

void WriteTable(const std::vector<ScanLogEntry>& entries, std::ostream& out)
{
    out << "Number  Date                 State             Files        Size  Target\n";
    for (const ScanLogEntry& entry : entries) {
        out << std::right << std::setw(6) << NumberOf(entry) << "  " << std::left << std::setw(21)
            << DateOf(entry) << std::setw(15) << StateOf(entry) << std::right << std::setw(8)
            << std::uint64_t{entry.filesFound} << std::setw(12) << SizeText(BytesOf(entry)) << "  "
            << Printable(TargetOf(entry)) << '\n';
    }
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams)
{
    const std::vector<ScanLogEntry> entries = CommandLog()->Entries();
    if (options.json) {
        WriteJson(entries, streams.out);
    } else if (entries.empty()) {
        streams.out << "No earlier scans.\n";
    } else {
        WriteTable(entries, streams.out);
    }
    return ExitStatus::Done;
}

}  // namespace

const Command ScansCommand = {"scans", "list the earlier deep scans that can be gone on with",
                              "  lumivault-cli scans\n"
                              "  lumivault-cli scans --json\n",
                              &AddJsonOption, &Run};
