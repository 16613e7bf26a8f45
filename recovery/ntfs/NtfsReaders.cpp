#include "recovery/ntfs/NtfsReaders.h"

#include "recovery/ntfs/NtfsRunBytes.h"

#include <algorithm>
#include <cstring>

namespace {

// Lists that lead to lists: true ones need two. Record 0 can name itself.
constexpr std::uint32_t DeepestNesting = 4;
// The format holds a list to 256 KiB, which is fewer than 11,000 entries.
constexpr std::uint32_t LongestAttributeList = 65536;
constexpr std::uint64_t ListValueOffset =
    24;  // of a resident list; its own offset field is not asked

bool LeadsToData(std::uint32_t attributeType)
{
    return attributeType == AttributeData || attributeType == AttributeIndexAllocation;
}

}  // namespace

std::uint64_t NtfsMftMap::SectorOf(std::uint64_t recordNumber,
                                   const NtfsVolume& volume,
                                   std::uint64_t volumeStart,
                                   std::uint64_t noMatch)
{
    if (m_stretches.size() > Runs.size()) {
        m_stretches.clear();
    }
    while (m_stretches.size() < Runs.size()) {
        const NtfsRun& run = Runs[m_stretches.size()];
        Stretch stretch = m_stretches.empty() ? Stretch() : m_stretches.back();
        stretch.begin = stretch.end;
        stretch.end += run.Length * volume.SectorsPerCluster;
        stretch.sector += SectorsToRun(run, volume.SectorsPerCluster);
        m_stretches.push_back(stretch);
    }
    const std::uint64_t wanted = recordNumber * volume.SectorsPerRecord;
    const auto found =
        std::lower_bound(m_stretches.begin(), m_stretches.end(), wanted,
                         [](const Stretch& stretch, std::uint64_t s) { return stretch.end < s; });
    return found != m_stretches.end() ? wanted - found->begin + found->sector + volumeStart
                                      : noMatch;
}

NtfsReaders::NtfsReaders(SectorSource& sectorSource, const NtfsVolume& ntfsVolume)
    : m_source(sectorSource), m_volume(ntfsVolume)
{
}

void NtfsReaders::Bind()
{
    (void)Codec.SetSectorSize(m_volume.BytesPerSector);
    m_mft.Runs.clear();
    // A table without runs makes an empty scan. While they load, the list itself resolves record numbers.
    (void)ReadAttributeRuns(m_volume.MftStartSector, AttributeData, m_mft.Runs);
}

std::uint64_t NtfsReaders::RecordNumberToSector(std::uint32_t recordNumber)
{
    return m_mft.SectorOf(recordNumber, m_volume, m_volume.PartitionStart, m_volume.PartitionStart);
}

ResultCode NtfsReaders::ReadRecordAt(std::uint64_t sector, RecordBuffer& outBuffer)
{
    outBuffer.bytes.fill(0);
    const auto sectorSize = static_cast<std::int32_t>(m_volume.BytesPerSector);
    std::int32_t sectorsRead = 0;
    return m_source.ReadSectors(outBuffer.bytes.data(),
                                static_cast<std::int32_t>(RecordReadBytes) / sectorSize, sector,
                                sectorSize, &sectorsRead);
}

ResultCode NtfsReaders::ReadFileRecord(std::uint32_t recordNumber, RecordBuffer& outBuffer)
{
    return ReadRecordAt(RecordNumberToSector(recordNumber), outBuffer);
}

ResultCode NtfsReaders::ReadRepairedRecord(std::uint64_t sector, RecordBuffer& outBuffer)
{
    if (const ResultCode result = ReadRecordAt(sector, outBuffer)) {
        return result;
    }
    if (!HasFileMagic(outBuffer.View())) {
        return ResultNoFileRecord;
    }
    return Codec.ApplyFixups(outBuffer.bytes);
}

ResultCode NtfsReaders::ReadAttributeRuns(std::uint64_t recordSector,
                                          std::uint32_t attributeType,
                                          RunList& outRuns)
{
    return ReadRunsNested(recordSector, attributeType, outRuns, 0);
}

ResultCode
NtfsReaders::FindAttributeRuns(ByteView record, std::uint32_t attributeType, RunList& outRuns)
{
    ByteView list;
    if (FindRunsOrList(record, attributeType, outRuns, list)) {
        return ResultSuccess;
    }
    if (list.Empty()) {
        return ResultAttributeMissing;
    }
    FollowList(list, outRuns, 0);
    return ResultSuccess;
}

// Decodes the wanted attribute, or remembers the last list that was passed; an empty view when there was none.
bool NtfsReaders::FindRunsOrList(ByteView record,
                                 std::uint32_t attributeType,
                                 RunList& outRuns,
                                 ByteView& outList) const
{
    AttributeWalk walk(record, RecordReadBytes, RunReaderRules);
    while (walk.Next()) {
        if (walk.Type() == attributeType) {
            Codec.DecodeRunList(walk.Attribute(), outRuns);
            return true;
        }
        if (walk.Type() == AttributeAttributeList) {
            outList = walk.Attribute();
        }
    }
    return false;
}

// NOLINTNEXTLINE(misc-no-recursion): DeepestNesting bounds it
ResultCode NtfsReaders::ReadRunsNested(std::uint64_t recordSector,
                                       std::uint32_t attributeType,
                                       RunList& outRuns,
                                       std::uint32_t nesting)
{
    if (nesting > DeepestNesting) {
        return ResultAttributeMissing;
    }
    RecordBuffer buffer;
    if (const ResultCode result = ReadRepairedRecord(recordSector, buffer)) {
        return result;
    }
    ByteView list;
    if (FindRunsOrList(buffer.View(), attributeType, outRuns, list)) {
        return ResultSuccess;
    }
    if (list.Empty()) {
        return ResultAttributeMissing;
    }
    FollowList(list, outRuns, nesting);
    return ResultSuccess;
}

// Only the first extent of a file is reached through a resident list.
// NOLINTNEXTLINE(misc-no-recursion): DeepestNesting bounds it
void NtfsReaders::FollowList(ByteView listAttribute, RunList& outRuns, std::uint32_t nesting)
{
    if (!listAttribute.Covers(AttributeNonResident, 1)) {
        return;
    }
    if (listAttribute.U8(AttributeNonResident) != 0) {
        FollowNonResidentList(listAttribute, outRuns);
        return;
    }
    ListTarget target;
    NtfsMftMap table;
    if (!FirstTargetOf(listAttribute, target) ||
        ReadRunsNested(m_volume.MftStartSector, AttributeData, table.Runs, nesting + 1) !=
            ResultSuccess) {
        return;
    }
    // The volume's start is not added here: past sector 0 the lookup goes astray, and what such a file gives depends on it.
    const std::uint64_t sector = table.SectorOf(target.recordNumber, m_volume, 0, 0);
    (void)ReadRunsNested(sector, target.attributeType, outRuns,
                         nesting + 1);  // what fails after a list leaves the runs short
}

bool NtfsReaders::FirstTargetOf(ByteView listAttribute, ListTarget& outTarget)
{
    const std::uint64_t end = listAttribute.U32(4);
    for (std::uint64_t at = ListValueOffset; at < end;) {
        const ByteView entry = listAttribute.Sub(at);
        const std::uint16_t length = entry.U16(4);
        if (length == 0) {
            return false;  // also where the buffer ends
        }
        if (LeadsToData(entry.U32(0))) {
            outTarget = {entry.U32(16) | std::uint64_t{entry.U16(20)} << 32, entry.U32(0)};
            return entry.Covers(16, 6);
        }
        at += length;
    }
    return false;
}

void NtfsReaders::FollowNonResidentList(ByteView listAttribute, RunList& outRuns)
{
    RunList listRuns;
    Codec.DecodeRunList(listAttribute, listRuns);
    std::uint32_t looked = 0;
    std::uint64_t sector = m_volume.PartitionStart;
    for (const NtfsRun& run : listRuns) {
        const std::uint64_t sectors = run.Length * m_volume.SectorsPerCluster;
        sector += SectorsToRun(run, m_volume.SectorsPerCluster);
        NtfsRunBytes bytes(m_source, sector, sectors, m_volume.BytesPerSector);
        for (std::uint64_t at = 0; at < sectors * m_volume.BytesPerSector;) {
            if (++looked > LongestAttributeList) {
                return;
            }
            const ByteView entry = bytes.At(at);
            const std::uint32_t type = entry.U32(0);
            const std::uint16_t length = entry.U16(4);
            if (type == AttributeEnd || type == 0 || length == 0) {
                break;  // also where the bytes that arrived end
            }
            if (LeadsToData(type) && (!entry.Covers(16, 4) ||
                                      AppendListedRuns(entry.U32(16), outRuns) != ResultSuccess)) {
                break;
            }
            at += length;
        }
    }
}

// The record is neither tested nor repaired, and the decoder is shown the run list as if it were an attribute: what
// comes out is what those bytes say, mostly nothing. Kept so.
ResultCode NtfsReaders::AppendListedRuns(std::uint32_t recordNumber, RunList& outRuns)
{
    RecordBuffer buffer;
    if (const ResultCode result = ReadFileRecord(recordNumber, buffer)) {
        return result;
    }
    AttributeWalk walk(buffer.View(), RecordReadBytes, RunReaderRules);
    while (walk.Next()) {
        if (LeadsToData(walk.Type())) {
            const ByteView attribute = walk.Attribute();
            if (attribute.Covers(AttributeRunListOffset, sizeof(std::uint16_t))) {
                Codec.DecodeRunList(attribute.Sub(attribute.U16(AttributeRunListOffset)), outRuns);
            }
            break;
        }
    }
    return ResultSuccess;
}

ResultCode NtfsReaders::ReadResidentData(std::uint64_t recordSector,
                                         std::span<std::uint8_t> buffer,
                                         std::uint32_t& outSize)
{
    RecordBuffer record;
    (void)ReadRecordAt(recordSector, record);  // what did not arrive is no record
    if (!HasFileMagic(record.View())) {
        return ResultNoFileRecord;
    }
    (void)Codec.ApplyFixups(record.bytes);  // cannot fail after the magic
    ByteView value;
    const ResultCode result =
        FindResidentData(record.View(), m_volume.RecordSize, RecordReadBytes, value);
    if (result == ResultSuccess) {
        outSize = static_cast<std::uint32_t>(value.Size());
        std::memcpy(buffer.data(), value.Data(), std::min(value.Size(), buffer.size()));
    }
    return result;
}

ResultCode NtfsReaders::ReadDataRealSize(std::uint64_t recordSector, std::uint64_t& outSize)
{
    RecordBuffer record;
    if (const ResultCode result = ReadRecordAt(recordSector, record)) {
        return result;
    }
    if (!HasFileMagic(record.View())) {
        return ResultNoFileRecord;
    }
    AttributeWalk walk(record.View(), RecordReadBytes, RunReaderRules);
    while (walk.Next()) {
        if (walk.Type() == AttributeData) {
            if (!walk.Attribute().Covers(AttributeRealSize, sizeof(std::uint64_t))) {
                break;
            }
            outSize = walk.Attribute().U64(AttributeRealSize);
            return ResultSuccess;
        }
    }
    return ResultInvalidParameter;
}
