// Reads FILE records by number or sector and finds data and run lists in them, attribute lists included, for the quick
// engine. Parsers of a record in hand stand apart from the reading, so that one read serves several questions.
#pragma once

#include "recovery/metadata/NtfsAttributes.h"
#include "recovery/metadata/NtfsRecordCodec.h"
#include "recovery/metadata/NtfsVolume.h"
#include "storage/SectorSource.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

// Room for one read of a record.
struct RecordBuffer
{
    std::array<std::uint8_t, RecordReadBytes> bytes = {};

    ByteView View() const { return ByteView(std::span<const std::uint8_t>(bytes)); }
};

// Where a record number lies, through the table's runs.
class NtfsMftMap
{
public:
    // Relative to the volume's start when volumeStart is 0. The end of a run counts as its own: the first record of the
    // next fragment resolves to the sector just past the one before, and what a scan records rests on it. Empty runs match
    // too. noMatch when no run does. Runs that were appended since the last call are taken in.
    std::uint64_t SectorOf(std::uint64_t recordNumber,
                           const NtfsVolume& volume,
                           std::uint64_t volumeStart,
                           std::uint64_t noMatch);

    RunList Runs;

private:
    struct Stretch
    {
        std::uint64_t begin = 0;  // in the table, sectors
        std::uint64_t end = 0;
        std::uint64_t sector = 0;  // in the volume
    };

    std::vector<Stretch> m_stretches;  // of the first of the runs
};

// One engine owns it. The source and the volume stay its own.
class NtfsReaders
{
public:
    NtfsReaders(SectorSource& sectorSource, const NtfsVolume& ntfsVolume);

    // Takes the volume's sector size and loads the table's runs; a table that cannot be read leaves them empty.
    void Bind();

    std::uint64_t RecordNumberToSector(std::uint32_t recordNumber);
    const RunList& MftRuns() const { return m_mft.Runs; }

    // Reads 8192 bytes from a sector; what does not arrive is 0. The record is not tested.
    [[nodiscard]] ResultCode ReadRecordAt(std::uint64_t sector, RecordBuffer& outBuffer);
    [[nodiscard]] ResultCode ReadFileRecord(std::uint32_t recordNumber, RecordBuffer& outBuffer);

    // Appends the runs of the first attribute of a type, named or not, or of what an attribute list leads to.
    // ResultNoFileRecord, ResultAttributeMissing, or the read's error. What goes wrong after a list does not show.
    [[nodiscard]] ResultCode
    ReadAttributeRuns(std::uint64_t recordSector, std::uint32_t attributeType, RunList& outRuns);
    // The same in a record that was read and repaired.
    [[nodiscard]] ResultCode
    FindAttributeRuns(ByteView record, std::uint32_t attributeType, RunList& outRuns);

    // Copies a resident value into the buffer, at least 8192 bytes long. As FindResidentData; ResultNoFileRecord for
    // anything but a record, unreadable ones too.
    [[nodiscard]] ResultCode ReadResidentData(std::uint64_t recordSector,
                                              std::span<std::uint8_t> buffer,
                                              std::uint32_t& outSize);
    // The real size in the first data attribute, resident or not. ResultInvalidParameter without one.
    [[nodiscard]] ResultCode ReadDataRealSize(std::uint64_t recordSector, std::uint64_t& outSize);

    NtfsRecordCodec Codec;

private:
    // What a resident list names first: a record, and the attribute to look for in it.
    struct ListTarget
    {
        std::uint64_t recordNumber = 0;
        std::uint32_t attributeType = 0;
    };

    [[nodiscard]] ResultCode ReadRepairedRecord(std::uint64_t sector, RecordBuffer& outBuffer);
    bool FindRunsOrList(ByteView record,
                        std::uint32_t attributeType,
                        RunList& outRuns,
                        ByteView& outList) const;
    [[nodiscard]] ResultCode ReadRunsNested(std::uint64_t recordSector,
                                            std::uint32_t attributeType,
                                            RunList& outRuns,
                                            std::uint32_t nesting);
    void FollowList(ByteView listAttribute, RunList& outRuns, std::uint32_t nesting);
    static bool FirstTargetOf(ByteView listAttribute, ListTarget& outTarget);
    void FollowNonResidentList(ByteView listAttribute, RunList& outRuns);
    [[nodiscard]] ResultCode AppendListedRuns(std::uint32_t recordNumber, RunList& outRuns);

    SectorSource& m_source;
    const NtfsVolume& m_volume;
    NtfsMftMap m_mft;
};
