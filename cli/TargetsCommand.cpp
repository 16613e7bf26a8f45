// lumivault-cli targets: the disks with their partitions and gaps, and what a user needs to tell them apart.
#include "cli/Command.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Text.h"
#include "session/Session.h"
#include "session/TargetParts.h"

#include <CLI/CLI.hpp>
#include <json/json.h>

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <vector>

namespace {

void AddOptions(CLI::App& app, CommandOptions& options)
{
    app.add_option("TARGET", options.target,
                   "an image file or a disk, to show its own partitions and gaps; IMAGE#N is the "
                   "name of one then");
    AddJsonOption(app, options);
}

// All of a gap is free, and of a disk without partitions; of a volume its file system has to say.
bool IsFreeKnown(const TargetRow& row)
{
    return row.spaceKnown || (row.kind != TargetKind::Partition && row.freeBytes != 0);
}

std::string FreeText(const TargetRow& row)
{
    if (row.HasFileSystem()) {
        return IsFreeKnown(row) ? SizeText(row.freeBytes) : "-";
    }
    return {};
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
        target["freeBytes"] =
            IsFreeKnown(row) ? Json::Value(Json::UInt64{row.freeBytes}) : Json::Value();
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

constexpr std::uint32_t ImageDisk = 0x80;  // in place of a disk's number

void WriteDiskLine(const DiskFacts& disk, std::ostream& out)
{
    if (disk.number == ImageDisk) {
        out << "Image  " << Printable(disk.node.string()) << "  " << SizeText(disk.sizeBytes)
            << '\n';
        return;
    }
    out << "Disk " << disk.number << "  " << Printable(disk.node.string()) << "  "
        << SizeText(disk.sizeBytes) << (disk.removable ? "  removable" : "")
        << (disk.readable ? "" : "  not readable by you") << '\n';
}

void WriteRow(const TargetRow& row, std::ostream& out)
{
    out << std::right << std::setw(5) << "#" + std::to_string(unsigned{row.number}) << "  "
        << std::left << std::setw(9) << KindName(row.kind) << ' ' << std::setw(16)
        << (row.imagePath.empty() ? Printable(row.node.string()) : std::string()) << ' '
        << Cell(row.fileSystem, 12) << std::right << std::setw(10) << SizeText(row.totalBytes)
        << std::setw(10) << FreeText(row) << "  " << Printable(row.label);
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

ExitStatus
Write(const std::vector<TargetRow>& rows, const CommandOptions& options, CommandStreams& streams)
{
    if (options.json) {
        WriteJson(rows, streams.out);
    } else {
        WriteTable(rows, streams);
    }
    return ExitStatus::Done;
}

// What one disk or image is cut into, and the whole of it.
ExitStatus RunOne(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const ResolvedTarget resolved = session.Resolve(options.target);
    if (const auto* refusal = std::get_if<TargetRefusal>(&resolved)) {
        return Refuse(WhyNot(*refusal), streams);
    }
    TargetParts parts = PartsOf(std::get<ScanTarget>(resolved), PartFacts::Space);
    if (parts.whole.number == 0) {
        return Refuse(
            {ExitStatus::WrongUse, Printable(options.target) +
                                       " is a part of a disk; give the disk, or an image of one."},
            streams);
    }
    if (parts.rows.empty() && !options.quiet) {
        streams.err << "There is no table of partitions: it is scanned as one piece.\n";
    }
    parts.rows.push_back(std::move(parts.whole));
    return Write(parts.rows, options, streams);
}

// Each disk's parts, then the disk itself.
std::vector<TargetRow> RowsOf(const TargetList& list)
{
    std::vector<TargetRow> rows = list.rows;
    for (TargetRow& whole : WholeDiskRows(list)) {
        const auto behind =
            std::find_if(rows.rbegin(), rows.rend(), [&whole](const TargetRow& row) {
                return row.disk.number == whole.disk.number;
            });
        rows.insert(behind.base(), std::move(whole));
    }
    return rows;
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    if (!options.target.empty()) {
        return RunOne(options, streams, session);
    }
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
    const ExitStatus status = Write(RowsOf(list), options, streams);
    if (list.rows.empty() && !options.quiet) {
        streams.err
            << "No disks were found; the other commands also take the path of an image file.\n";
    }
    return status;
}

}  // namespace

const Command TargetsCommand = {"targets", "show what can be scanned",
                                "  lumivault-cli targets\n"
                                "  lumivault-cli targets disk.img\n"
                                "  lumivault-cli targets --json\n",
                                &AddOptions, &Run};
