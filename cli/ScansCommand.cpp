// lumivault-cli scans: what stands in the log of earlier scans.
#include "cli/Command.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "session/Session.h"
#include "session/TargetParts.h"

#include <CLI/CLI.hpp>
#include <json/json.h>

#include <iomanip>
#include <ostream>

namespace {

// The number of a part that an image's table has now, as the other commands take it; nothing where it has changed.
std::optional<std::uint32_t> PartNumberOf(const EarlierScan& scan)
{
    ScanTarget image;
    image.imagePath = scan.imagePath;
    for (const TargetRow& row : PartsOf(image, PartFacts::Places).rows) {
        if (row.startSector == scan.startSector && row.sectorCount == scan.sectorCount) {
            return row.number;
        }
    }
    return std::nullopt;
}

// Of an image the whole begins at 0 and has all its sectors; one that has grown since counts as a part.
bool IsPartOfImage(const EarlierScan& scan)
{
    constexpr std::uint64_t ImageSectorBytes = 512;
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(scan.imagePath, error);
    return scan.startSector != 0 || (!error && scan.sectorCount != bytes / ImageSectorBytes);
}

// The image's path, or the drive, and the range of it.
std::string TargetOf(const EarlierScan& scan)
{
    const std::string range = ", sectors " + std::to_string(scan.startSector) + " to " +
                              std::to_string(scan.startSector + scan.sectorCount);
    if (scan.imagePath.empty()) {
        return "drive " + std::to_string(scan.diskNumber) + range;
    }
    if (!IsPartOfImage(scan)) {
        return scan.imagePath.string();
    }
    const std::optional<std::uint32_t> part = PartNumberOf(scan);
    return scan.imagePath.string() + (part ? "#" + std::to_string(*part) : std::string()) + range;
}

void WriteJson(const std::vector<EarlierScan>& scans, std::ostream& out)
{
    Json::Value rows(Json::arrayValue);
    for (const EarlierScan& scan : scans) {
        Json::Value row;
        row["number"] = scan.number;
        row["target"] = Printable(TargetOf(scan));
        row["startSector"] = Json::UInt64{scan.startSector};
        row["sectorCount"] = Json::UInt64{scan.sectorCount};
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
