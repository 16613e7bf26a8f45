// lumivault-cli scans: what stands in the log of earlier scans.
#include "cli/Command.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "session/Session.h"

#include <CLI/CLI.hpp>
#include <json/json.h>

#include <iomanip>
#include <ostream>

namespace {

// The image's path, or the drive and range.
std::string TargetOf(const EarlierScan& scan)
{
    return !scan.imagePath.empty() ? scan.imagePath.string()
                                   : "drive " + std::to_string(scan.diskNumber) + ", sectors " +
                                         std::to_string(scan.startSector) + " to " +
                                         std::to_string(scan.startSector + scan.sectorCount);
}

void WriteJson(const std::vector<EarlierScan>& scans, std::ostream& out)
{
    Json::Value rows(Json::arrayValue);
    for (const EarlierScan& scan : scans) {
        Json::Value row;
        row["number"] = scan.number;
        row["target"] = Printable(TargetOf(scan));
        row["date"] = TimeText(scan.savedAt);
        row["state"] = StateOf(scan);
        row["files"] = Json::UInt64{scan.files};
        row["bytes"] = Json::UInt64{scan.bytes};
        rows.append(row);
    }
    Json::Value whole;
    whole["scans"] = rows;
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    out << Json::writeString(builder, whole) << '\n';
}

void WriteTable(const std::vector<EarlierScan>& scans, std::ostream& out)
{
    out << "Number  Date                 State             Files        Size  Target\n";
    for (const EarlierScan& scan : scans) {
        out << std::right << std::setw(6) << scan.number << "  " << std::left << std::setw(21)
            << TimeText(scan.savedAt) << std::setw(15) << StateOf(scan) << std::right
            << std::setw(8) << scan.files << std::setw(12) << SizeText(scan.bytes) << "  "
            << Printable(TargetOf(scan)) << '\n';
    }
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const EarlierScans earlier = session.History().List();
    if (earlier.fault != ResultSuccess) {
        return Refuse(WhyBroken(earlier.fault), streams);
    }
    if (options.json) {
        WriteJson(earlier.scans, streams.out);
    } else if (earlier.scans.empty()) {
        streams.out << "No earlier scans.\n";
    } else {
        WriteTable(earlier.scans, streams.out);
    }
    return ExitStatus::Done;
}

}  // namespace

const Command ScansCommand = {"scans", "list the earlier deep scans that can be gone on with",
                              "  lumivault-cli scans\n"
                              "  lumivault-cli scans --json\n",
                              &AddJsonOption, &Run};
