#include "recovery/ntfs/NtfsLostTables.h"

#include "recovery/metadata/NtfsVolume.h"

std::uint32_t DefaultSectorsPerCluster(std::uint64_t sectorCount, std::uint32_t bytesPerSector)
{
    const double mebibytes =
        static_cast<double>(sectorCount) * static_cast<double>(bytesPerSector) / 1048576.0;
    const std::uint32_t wholeUnits = bytesPerSector / 512;
    const double unit = wholeUnits;
    if (mebibytes <= 7 * unit) {
        return 8;
    }
    if (mebibytes <= 512 * unit) {
        return 1;
    }
    if (mebibytes <= 1024 * unit) {
        return 2;
    }
    return mebibytes <= 2048 * unit ? 4 : 8;
}

std::uint64_t NtfsLostTable::SectorOf(std::uint32_t recordNumber,
                                      std::uint32_t sectorsPerRecord) const
{
    const std::uint64_t wanted = std::uint64_t{recordNumber} * sectorsPerRecord;
    std::uint64_t position = 0;
    std::uint64_t sector = 0;
    for (const NtfsRun& run : *runs) {
        const std::uint64_t length = run.Length * sectorsPerCluster;
        sector += SectorsToRun(run, sectorsPerCluster);
        if (length == 0) {
            return sector + wanted + volumeStart;
        }
        if (position <= wanted && wanted - position <= length) {
            return wanted - position + sector + volumeStart;
        }
        position += length;
    }
    return volumeStart;
}

void NtfsLostTables::Clear()
{
    m_tables.clear();
    m_given.clear();
}

void NtfsLostTables::Enter(std::uint64_t mftLba, const RunList& runs)
{
    m_tables[mftLba] = std::make_shared<const RunList>(runs);
}

// Position and sector run on from table to table, so only the first gets an honest test. Which table a record gets rests on it.
bool NtfsLostTables::FindMftOfRecord(std::uint64_t sectorInTable,
                                     std::uint64_t lba,
                                     std::uint32_t sectorsPerCluster,
                                     std::uint64_t* outKey) const
{
    std::uint64_t position = 0;
    std::uint64_t sector = 0;
    for (const auto& [key, runs] : m_tables) {
        for (const NtfsRun& run : *runs) {
            if (position > sectorInTable) {
                return false;  // it never gets smaller
            }
            const std::uint64_t length = run.Length * sectorsPerCluster;
            sector += SectorsToRun(run, sectorsPerCluster);
            if (sectorInTable - position > length) {
                position += length;
                continue;
            }
            const std::uint64_t start = key - SectorsToRun(runs->front(), sectorsPerCluster);
            if (sectorInTable - position + sector + start == lba) {
                *outKey = key;
                return true;
            }
            break;  // the next table; this run counts for the sector, not for the position
        }
    }
    return false;
}

void NtfsLostTables::GiveId(NtfsLostTable& table, const RunList* shared)
{
    const auto offset = static_cast<std::uint64_t>(table.runs->back().Offset);
    const Key key = {table.volumeStart, table.sectorsPerCluster, offset, shared};
    table.id = m_given.size();
    table = m_given.try_emplace(key, table).first->second;
}

NtfsLostTable NtfsLostTables::ResolveVolumeStart(std::uint64_t lba,
                                                 std::uint32_t recordNumber,
                                                 std::uint32_t sectorsPerRecord,
                                                 std::uint32_t sectorsPerCluster,
                                                 std::uint64_t startLba)
{
    NtfsLostTable table;
    table.volumeStart = startLba;
    table.sectorsPerCluster = sectorsPerCluster;
    const std::uint64_t sectorInTable = std::uint64_t{recordNumber} * sectorsPerRecord;
    std::uint64_t key = 0;
    const RunList* shared = nullptr;
    RunList runs;
    if (FindMftOfRecord(sectorInTable, lba, sectorsPerCluster, &key)) {
        const std::shared_ptr<const RunList>& found = m_tables.at(key);
        shared = found.get();
        if (key != 0) {
            const std::uint64_t inFront = SectorsToRun(found->front(), sectorsPerCluster);
            table.volumeStart = inFront != 0 ? key - inFront : startLba;
            table.runs = found;
            GiveId(table, shared);
            return table;
        }
        // A table at sector 0 counts as none, but its runs stand before the assumed one.
        runs = *found;
    }
    NtfsRun assumed;
    assumed.Offset =
        static_cast<std::int64_t>((lba - sectorInTable - startLba) / sectorsPerCluster);
    runs.push_back(assumed);
    table.runs = std::make_shared<const RunList>(std::move(runs));
    GiveId(table, shared);
    return table;
}
