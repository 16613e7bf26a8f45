// lumivault-cli targets: the disks with their partitions and gaps, and what a user needs to tell them apart.
#include "cli/Command.h"
#include "cli/TextForms.h"
#include "platform/Text.h"
#include "storage/DiskEnumerator.h"
#include "storage/DriveRegistry.h"

#include <json/json.h>

#include <algorithm>
#include <iomanip>
#include <ostream>
#include <vector>

namespace {

// What is known of a row's disk.
struct DiskFacts
{
    BlockDevice disk;
    bool readable = false;
};

DiskFacts FactsOf(std::uint32_t diskNumber)
{
    DiskFacts facts;
    if (const auto disk = DriveRegistry::Instance().Find(diskNumber)) {
        facts.disk = *disk;
    }
    FileHandle handle;
    facts.readable = handle.OpenForReading(facts.disk.Node()) == ResultSuccess;
    return facts;
}

std::string_view KindOf(const VolumeRecord& volume)
{
    if (volume.PartitionType != 0 && volume.PartitionNumber != 0) {
        return "partition";
    }
    // A gap never begins in front of the first track's end.
    return volume.StartSector == 0 ? "disk" : "gap";
}

std::string MountPointOf(const VolumeRecord& volume)
{
    return volume.RootPath.size() > 1 ? volume.RootPath.substr(0, volume.RootPath.size() - 1)
                                      : volume.RootPath;
}

// The node of a partition where the kernel has read the table too, else the disk's.
std::string NodeOf(const VolumeRecord& volume, const BlockDevice& disk)
{
    for (const KernelPartition& partition : disk.partitions) {
        if (partition.startByte == volume.StartSector * disk.sectorSize &&
            volume.PartitionType != 0) {
            return BlockDevice::NodeOf(partition.name).string();
        }
    }
    return disk.Node().string();
}

void WriteJson(const std::vector<VolumeRecord>& volumes, std::ostream& out)
{
    Json::Value targets(Json::arrayValue);
    for (const VolumeRecord& volume : volumes) {
        const DiskFacts facts = FactsOf(volume.DiskNumber);
        Json::Value target;
        target["number"] = static_cast<unsigned>(volume.Letter);
        target["kind"] = std::string(KindOf(volume));
        target["disk"] = volume.DiskNumber;
        target["device"] = facts.disk.Node().string();
        target["startSector"] = Json::UInt64{volume.StartSector};
        target["sectorCount"] = Json::UInt64{volume.SectorCount};
        target["sectorSize"] = facts.disk.sectorSize;
        target["fileSystem"] = volume.FileSystemName;
        target["label"] = volume.VolumeLabel;
        target["totalBytes"] = Json::UInt64{volume.TotalBytes};
        target["freeBytes"] = Json::UInt64{volume.FreeBytes};
        target["mountPoint"] = Utf16ToUtf8(Utf8ToUtf16(MountPointOf(volume)));
        target["removable"] = facts.disk.removable;
        target["readable"] = facts.readable;
        targets.append(std::move(target));
    }
    Json::Value document;
    document["targets"] = std::move(targets);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    out << Json::writeString(builder, document) << '\n';
}

void WriteDiskLine(std::uint32_t number, const DiskFacts& facts, std::ostream& out)
{
    out << "Disk " << number << "  " << Printable(facts.disk.Node().string()) << "  "
        << SizeText(facts.disk.sizeBytes) << (facts.disk.removable ? "  removable" : "")
        << (facts.readable ? "" : "  not readable by you") << '\n';
}

void WriteRow(const VolumeRecord& volume, const BlockDevice& disk, std::ostream& out)
{
    const bool hasFileSystem = volume.PartitionType != 0;
    out << std::right << std::setw(5) << "#" + std::to_string(unsigned{volume.Letter}) << "  "
        << std::left << std::setw(10) << KindOf(volume) << std::setw(17)
        << Printable(NodeOf(volume, disk)) << std::setw(12) << Printable(volume.FileSystemName)
        << std::right << std::setw(10) << SizeText(volume.TotalBytes) << std::setw(10)
        << (hasFileSystem ? SizeText(volume.FreeBytes) : "") << "  "
        << Printable(volume.VolumeLabel);
    if (!volume.RootPath.empty()) {
        out << "  at " << Printable(MountPointOf(volume));
    }
    out << '\n';
}

void WriteTable(const std::vector<VolumeRecord>& volumes, CommandStreams& streams)
{
    bool allReadable = true;
    std::uint32_t lastDisk = VolumeRecord::Unknown;
    DiskFacts facts;
    for (const VolumeRecord& volume : volumes) {
        if (volume.DiskNumber != lastDisk) {
            facts = FactsOf(volume.DiskNumber);
            WriteDiskLine(volume.DiskNumber, facts, streams.out);
            allReadable = allReadable && facts.readable;
            lastDisk = volume.DiskNumber;
        }
        WriteRow(volume, facts.disk, streams.out);
    }
    if (!allReadable) {
        streams.err
            << "What you may not read is listed by what the system knows of it; scanning it "
               "asks for a password, or needs sudo.\n";
    }
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams)
{
    DiskEnumerator enumerator;
    if (enumerator.Enumerate() == 0) {
        return Refuse({ExitStatus::TargetFailed,
                       "the system does not list its disks; give the other commands the path of an "
                       "image file or of a block device."},
                      streams);
    }
    std::vector<VolumeRecord> volumes;
    enumerator.Snapshot(volumes);
    if (options.json) {
        WriteJson(volumes, streams.out);
    } else {
        WriteTable(volumes, streams);
    }
    if (volumes.empty() && !options.quiet) {
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
