// The readers over a whole source of records: run lists through attribute lists of both kinds, lists that lead to each
// other, resident values and sizes. The input is the cluster size in sectors, the table's first sector, then the source.
#include "fuzz/MemorySource.h"
#include "recovery/ntfs/NtfsReaders.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ByteView input(data, size);
    const ByteView bytes = input.Sub(2, 65536);
    const MemorySource memory(ByteVector(bytes.Data(), bytes.Data() + bytes.Size()));
    SectorSource source;
    memory.Open(source);
    NtfsVolume volume;
    volume.SectorCount = memory.Sectors();
    volume.SectorsPerCluster = 1U << input.U8(0) % 7;
    volume.MftStartSector = input.U8(1);
    NtfsReaders readers(source, volume);
    readers.Bind();
    for (std::uint64_t sector = 0; sector < memory.Sectors(); sector += 2) {
        RunList runs;
        (void)readers.ReadAttributeRuns(sector,
                                        sector % 4 == 0 ? AttributeData : AttributeIndexAllocation,
                                        runs);  // any answer will do
        std::array<std::uint8_t, RecordReadBytes> value = {};
        std::uint32_t valueSize = 0;
        if (readers.ReadResidentData(sector, value, valueSize) == ResultSuccess &&
            valueSize >= volume.RecordSize) {
            std::abort();
        }
        std::uint64_t realSize = 0;
        (void)readers.ReadDataRealSize(sector, realSize);  // as above
    }
    return 0;
}
