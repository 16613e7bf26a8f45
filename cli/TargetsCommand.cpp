// lumivault-cli targets: the disks with their partitions and gaps, and what a user needs to tell them apart.
#include "cli/Command.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Text.h"
#include "session/Session.h"

#include <json/json.h>

#include <iomanip>
#include <ostream>
#include <vector>

namespace {

std::string_view KindName(TargetKind kind)
{
    switch (kind) {
    case TargetKind::Partition:
        return "partition";
    case TargetKind::Gap:
        return "gap";
    case TargetKind::Disk:
        break;
    }
    return "disk";
}

void WriteJson(const std::vector<TargetRow>& rows, std::ostream& out)
{
    Json::Value targets(Json::arrayValue);
    for (const TargetRow& row : rows) {
        Json::Value target;
        target["number"] = static_cast<unsigned>(row.number);
        target["kind"] = std::string(KindName(row.kind));
        target["disk"] = row.disk.number;
        target["device"] = row.disk.node.string();
        target["startSector"] = Json::UInt64{row.startSector};
        target["sectorCount"] = Json::UInt64{row.sectorCount};
        target["sectorSize"] = row.disk.sectorSize;
        target["fileSystem"] = row.fileSystem;
        target["label"] = row.label;
        target["totalBytes"] = Json::UInt64{row.totalBytes};
        target["freeBytes"] = Json::UInt64{row.freeBytes};
        target["mountPoint"] = Utf16ToUtf8(Utf8ToUtf16(row.mountPoint));
        target["removable"] = row.disk.removable;
        target["readable"] = row.disk.readable;
        targets.append(std::move(target));
    }
    Json::Value document;
    document["targets"] = std::move(targets);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    out << Json::writeString(builder, document) << '\n';
}

void WriteDiskLine(const DiskFacts& disk, std::ostream& out)
{
    out << "Disk " << disk.number << "  " << Printable(disk.node.string()) << "  "
        << SizeText(disk.sizeBytes) << (disk.removable ? "  removable" : "")
        << (disk.readable ? "" : "  not readable by you") << '\n';
}

void WriteRow(const TargetRow& row, std::ostream& out)
{
    out << std::right << std::setw(5) << "#" + std::to_string(unsigned{row.number}) << "  "
        << std::left << std::setw(10) << KindName(row.kind) << std::setw(17)
        << Printable(row.node.string()) << std::setw(12) << Printable(row.fileSystem) << std::right
        << std::setw(10) << SizeText(row.totalBytes) << std::setw(10)
        << (row.HasFileSystem() ? SizeText(row.freeBytes) : "") << "  " << Printable(row.label);
    if (!row.mountPoint.empty()) {
        out << "  at " << Printable(row.mountPoint);
    }
    out << '\n';
}

void WriteTable(const std::vector<TargetRow>& rows, CommandStreams& streams)
{
    bool allReadable = true;
    const DiskFacts* last = nullptr;
    for (const TargetRow& row : rows) {
        if (last == nullptr || last->number != row.disk.number) {
            WriteDiskLine(row.disk, streams.out);
            allReadable = allReadable && row.disk.readable;
            last = &row.disk;
        }
        WriteRow(row, streams.out);
    }
    if (!allReadable) {
        streams.err
            << "What you may not read is listed by what the system knows of it; scanning it "
               "asks for a password, or needs sudo.\n";
    }
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const TargetList list = session.ListTargets();
    if (list.end == ListEnd::OutOfMemory || list.end == ListEnd::Failed) {
        return Refuse(
            WhyBroken(list.end == ListEnd::OutOfMemory ? ResultOutOfMemory : ResultGeneralFailure),
            streams);
    }
    if (list.end != ListEnd::Complete) {
        return Refuse({ExitStatus::TargetFailed,
                       "the system does not list its disks; give the other commands the path of an "
                       "image file or of a block device."},
                      streams);
    }
    if (options.json) {
        WriteJson(list.rows, streams.out);
    } else {
        WriteTable(list.rows, streams);
    }
    if (list.rows.empty() && !options.quiet) {
        streams.err
            << "No disks were found; the other commands also take the path of an image file.\n";
    }
    return ExitStatus::Done;
}

}  // namespace

const Command TargetsCommand = {"targets", "show what can be scanned",
                                "  lumivault-cli targets\n"
                                "  lumivault-cli targets --json\n",
                                &AddJsonOption, &Run};
