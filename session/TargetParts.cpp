#include "session/TargetParts.h"

#include "platform/BlockProbe.h"
#include "session/Guard.h"
#include "session/TargetPlace.h"
#include "storage/DiskPieces.h"
#include "storage/DriveRegistry.h"
#include "storage/ScanSource.h"
#include "storage/VolumeReading.h"

#include <utility>

namespace {

// A disk or image that is opened to be looked at.
struct Opened
{
    FileHandle handle;
    BlockDevice device;
    DiskFacts facts;
};

bool IsWhole(const ScanTarget& target)
{
    const ScanTarget whole = UpToTheLastSector(target);
    const auto disk = DriveRegistry::Instance().Find(target.diskNumber);
    return target.IsImage()
               ? target.IsWholeImage()
               : target.startSector == 0 && disk.has_value() &&
                     whole.ByteCount() / target.sectorSize == disk->sizeBytes / target.sectorSize;
}

bool Open(const ScanTarget& target, Opened& opened)
{
    if (!IsWhole(target)) {
        return false;
    }
    ResultCode result = ResultSuccess;
    if (target.IsImage()) {
        opened.facts.number = ImageDiskNumber;
        opened.facts.node = target.imagePath;
        opened.device.sectorSize = ImageSectorSize;
        result = opened.handle.OpenForReading(target.imagePath);
    } else {
        opened.device = *DriveRegistry::Instance().Find(target.diskNumber);
        opened.facts.number = target.diskNumber;
        opened.facts.node = opened.device.Node();
        opened.facts.model = opened.device.model;
        opened.facts.removable = opened.device.removable;
        result = DriveRegistry::Instance().Open(target.diskNumber, opened.handle);
    }
    opened.facts.readable = result == ResultSuccess;
    opened.facts.sectorSize = target.sectorSize;
    return result == ResultSuccess && opened.handle.Size(&opened.facts.sizeBytes) == ResultSuccess;
}

TargetRow RowOf(const VolumeRecord& piece, const Opened& opened, const ScanTarget& target)
{
    TargetRow row;
    row.kind = piece.PartitionNumber != 0 ? TargetKind::Partition : TargetKind::Gap;
    row.number = piece.Letter;
    row.disk = opened.facts;
    row.node = opened.facts.node;
    row.imagePath = target.imagePath;
    FillRow(row, piece);
    return row;
}

TargetRow WholeRow(const Opened& opened, const ScanTarget& target, std::size_t parts)
{
    VolumeRecord whole;
    whole.Letter = static_cast<char16_t>(parts + 1);
    whole.SectorCount = opened.facts.sizeBytes / target.sectorSize;
    whole.TotalBytes = opened.facts.sizeBytes;
    TargetRow row = RowOf(whole, opened, target);
    row.kind = TargetKind::Disk;
    return row;
}

// A volume without a table around it.
void NameContent(const Opened& opened, TargetRow& whole)
{
    const ProbedFileSystem found =
        ProbeFileSystem(opened.handle, 0, opened.facts.sizeBytes, opened.facts.sectorSize);
    whole.fileSystem = found.name;
    whole.label = found.label;
}

}  // namespace

TargetParts PartsOf(const ScanTarget& target, PartFacts facts, const std::function<bool()>& goesOn)
{
    TargetParts parts;
    const ResultCode fault = RunGuarded([&] {
        Opened opened;
        if (!Open(target, opened)) {
            return;
        }
        FileHandle reading;
        if (opened.handle.Duplicate(reading) != ResultSuccess) {
            return;
        }
        const StorageMap storage;
        std::vector<VolumeRecord> volumes =
            ReadTableOf(std::move(reading), opened.device, opened.facts.number, storage,
                        [&] { return facts == PartFacts::Space && (!goesOn || goesOn()); });
        if (!volumes.empty()) {
            for (const VolumeRecord& piece :
                 PiecesOf(std::move(volumes), opened.facts.sizeBytes, target.sectorSize)) {
                parts.rows.push_back(RowOf(piece, opened, target));
            }
        }
        parts.whole = WholeRow(opened, target, parts.rows.size());
        if (parts.rows.empty()) {
            NameContent(opened, parts.whole);
        }
    });
    return fault == ResultSuccess ? std::move(parts) : TargetParts();
}

ScanTarget TargetOfPart(const ScanTarget& target, const TargetRow& part)
{
    ScanTarget out = target;
    if (part.kind == TargetKind::Disk) {
        return out;
    }
    out.letter = static_cast<char16_t>(ScanTarget::FirstImageId + part.number - 1);
    out.startSector = part.startSector;
    out.sectorCount = part.sectorCount;
    return out;
}

std::optional<ScanTarget> FindPart(const ScanTarget& target, std::uint32_t number)
{
    const TargetParts parts = PartsOf(target, PartFacts::Places);
    for (const TargetRow& row : parts.rows) {
        if (row.number == number) {
            return TargetOfPart(target, row);
        }
    }
    return number != 0 && number == parts.whole.number ? std::optional(target) : std::nullopt;
}
