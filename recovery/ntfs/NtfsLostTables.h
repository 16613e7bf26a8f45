// Master file tables that a deep scan knows, and where it takes a record number to lie.
#pragma once

#include "recovery/metadata/NtfsRecordCodec.h"

#include <cstdint>
#include <map>
#include <memory>
#include <tuple>

// A guess at the cluster size, in sectors, by the size of the target.
std::uint32_t DefaultSectorsPerCluster(std::uint64_t sectorCount, std::uint32_t bytesPerSector);

// The table that a record is believed to belong to. Copies share the runs.
struct NtfsLostTable
{
    std::shared_ptr<const RunList> runs;  // one run of length 0: a table in one piece is assumed
    std::uint64_t volumeStart = 0;        // LBA
    std::uint32_t sectorsPerCluster = 8;
    std::uint64_t id = 0;  // equal for tables that are equal in all the others

    // The LBA of a record number; volumeStart when no run holds it.
    std::uint64_t SectorOf(std::uint32_t recordNumber, std::uint32_t sectorsPerRecord) const;
};

// Tables by the LBA of their record 0.
class NtfsLostTables
{
public:
    void Clear();
    // The last table entered at an LBA counts. One whose runs could not be read is kept, empty.
    void Enter(std::uint64_t mftLba, const RunList& runs);
    // The table in which this record number lies exactly at lba; else one in one piece that begins where this record's
    // number puts it. startLba is the target's.
    NtfsLostTable ResolveVolumeStart(std::uint64_t lba,
                                     std::uint32_t recordNumber,
                                     std::uint32_t sectorsPerRecord,
                                     std::uint32_t sectorsPerCluster,
                                     std::uint64_t startLba);

private:
    using Key = std::tuple<std::uint64_t, std::uint32_t, std::uint64_t, const RunList*>;

    bool FindMftOfRecord(std::uint64_t sectorInTable,
                         std::uint64_t lba,
                         std::uint32_t sectorsPerCluster,
                         std::uint64_t* outKey) const;
    void GiveId(NtfsLostTable& table, const RunList* shared);

    std::map<std::uint64_t, std::shared_ptr<const RunList>> m_tables;
    // Tables given out, so that equal ones share their runs and their id.
    std::map<Key, NtfsLostTable> m_given;
};
