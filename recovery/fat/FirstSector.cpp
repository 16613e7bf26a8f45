#include "recovery/fat/FirstSector.h"

#include "recovery/FileTypeCatalogue.h"
#include "recovery/carving/CarveDriver.h"
#include "recovery/fat/FatEntryNames.h"

#include <string>
#include <vector>

namespace {

constexpr std::uint32_t LastHighWord = 256;

bool ReadOne(const SectorReader& reader, std::uint64_t lba, std::vector<std::uint8_t>& outSector)
{
    std::int32_t sectorsRead = 0;
    outSector.resize(static_cast<std::size_t>(reader.sectorSize));
    return reader.source.ReadSectors(outSector.data(), 1, lba, reader.sectorSize, &sectorsRead) ==
           ResultSuccess;
}

std::uint32_t FindHighWord(const SectorReader& reader,
                           std::uint16_t lowWord,
                           const ClusterSectorFunction& sectorOf,
                           const std::function<bool(ByteView sector, std::uint64_t lba)>& fits)
{
    std::vector<std::uint8_t> sector;
    for (std::uint32_t high = 0; high <= LastHighWord; ++high) {
        const std::uint64_t lba = sectorOf(high << 16 | lowWord);
        if (lba > reader.endLba || !ReadOne(reader, lba, sector)) {
            return 0;
        }
        if (fits(ByteView(sector), lba)) {
            return high;
        }
    }
    return 0;
}

}  // namespace

bool HeadFitsName(const SectorReader& reader, std::string_view name, std::uint64_t lba)
{
    std::string extension;
    std::vector<std::uint8_t> sector;
    return ExtensionOf(name, extension) != ResultSuccess || !ReadOne(reader, lba, sector) ||
           VerifyExtensionAtSector(ByteView(sector), extension, reader.source, reader.sectorSize,
                                   lba);
}

std::uint32_t FindHighWordOfFile(const SectorReader& reader,
                                 std::uint16_t lowWord,
                                 std::string_view name,
                                 const ClusterSectorFunction& sectorOf)
{
    std::string extension;
    if (ExtensionOf(name, extension) != ResultSuccess) {
        return 0;
    }
    return FindHighWord(reader, lowWord, sectorOf, [&](ByteView sector, std::uint64_t lba) {
        return VerifyExtensionAtSector(sector, extension, reader.source, reader.sectorSize, lba);
    });
}

std::uint32_t FindHighWordOfFolder(const SectorReader& reader,
                                   std::uint16_t lowWord,
                                   const ClusterSectorFunction& sectorOf)
{
    return FindHighWord(reader, lowWord, sectorOf, [](ByteView sector, std::uint64_t /*lba*/) {
        return StartsWithDotEntries(sector);
    });
}
