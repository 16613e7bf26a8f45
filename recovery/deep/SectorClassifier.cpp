#include "recovery/deep/SectorClassifier.h"

#include "recovery/carving/CarveContext.h"
#include "recovery/deep/ScanJournal.h"
#include "recovery/metadata/SectorValidators.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t RecordReadBytes = 8192;

// A record whose sectors run over the block's end is read again as a whole, whatever comes of the read.
ResultCode AddRecord(const Analysers& analysers,
                     std::span<std::uint8_t> rest,
                     std::size_t recordBytes,
                     std::size_t sectorIndex,
                     std::uint64_t lba)
{
    if (rest.size() >= recordBytes) {
        if (analysers.journal != nullptr) {
            analysers.journal->AddRecord(sectorIndex);
        }
        return analysers.ntfs.AddFileRecord(rest, lba);
    }
    std::array<std::uint8_t, RecordReadBytes> record = {};
    std::int32_t sectorsRead = 0;
    (void)analysers.source.ReadSectors(
        record.data(), static_cast<std::int32_t>(RecordReadBytes) / analysers.sectorSize, lba,
        analysers.sectorSize, &sectorsRead);
    if (analysers.journal != nullptr) {
        analysers.journal->AddWholeRecord(record, lba);
    }
    return analysers.ntfs.AddFileRecord(record, lba);
}

}  // namespace

ResultCode ClassifyBlock(const Analysers& analysers,
                         std::span<std::uint8_t> block,
                         std::uint64_t firstLba,
                         const CarveProgress& progress,
                         std::int64_t& outSkipSectors,
                         std::int64_t& inOutFilesFound)
{
    const auto sectorBytes = static_cast<std::size_t>(analysers.sectorSize);
    const std::size_t recordBytes = sectorBytes > 512 ? sectorBytes : 2 * sectorBytes;
    const auto sectors = static_cast<std::int64_t>(block.size() / sectorBytes);
    CarveContext& carve = CarveContext::Instance();
    ResultCode result = ResultSuccess;
    outSkipSectors = 0;
    std::int64_t at = 0;
    while (at < sectors) {
        const std::span<std::uint8_t> rest =
            block.subspan(static_cast<std::size_t>(at) * sectorBytes);
        const ByteView sector(rest.data(), sectorBytes);
        const std::uint64_t lba = firstLba + static_cast<std::uint64_t>(at);
        std::int64_t step = 1;
        if (const std::uint64_t free = carve.freeStretch.CountFrom(lba); free != 0) {
            carve.PassOverSectors();
            at += std::min(static_cast<std::int64_t>(free), sectors - at);
            continue;
        }
        // The first byte tells most sectors apart from all metadata.
        const std::uint8_t first = rest.front();
        if (first == 'F' && IsMftRecord(sector, static_cast<std::uint32_t>(recordBytes))) {
            result = AddRecord(analysers, rest, recordBytes, static_cast<std::size_t>(at), lba);
        } else if (first == '.' && IsFatDotEntries(sector)) {
            if (analysers.journal != nullptr) {
                analysers.journal->AddDirectoryStart(sector, lba);
            }
            analysers.fat.AddDirectoryStart(sector, lba);
        } else if (first != 0 && first != '.' && IsFatDirectorySector(sector)) {
            if (analysers.journal != nullptr) {
                analysers.journal->AddDirectorySector(sector, lba);
            }
            analysers.fat.AddDirectorySector(sector, lba);
        } else {
            const ResultCode carved =
                analysers.carver.CarveAtSector(sector, lba, progress, analysers.source,
                                               analysers.sectorSize, step, inOutFilesFound);
            if (carved == ResultCancelled) {
                outSkipSectors = at - sectors;
                return ResultCancelled;
            }
        }
        at += step;
    }
    outSkipSectors = at - sectors;
    return result;
}
