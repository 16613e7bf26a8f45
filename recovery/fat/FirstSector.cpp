#include "recovery/fat/FirstSector.h"

#include "platform/Text.h"
#include "recovery/FileTypeCatalogue.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/CarveDriver.h"
#include "recovery/metadata/FatEntryNames.h"

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

std::uint32_t HighWordSearch::OfFile(const SectorReader& reader,
                                     std::uint64_t volumeTag,
                                     std::uint16_t lowWord,
                                     std::string_view name,
                                     const ClusterSectorFunction& sectorOf)
{
    std::string extension;
    if (ExtensionOf(name, extension) != ResultSuccess) {
        return 0;
    }
    extension = LowerAscii(extension);
    const auto [known, isNew] =
        m_answers[volumeTag].try_emplace(std::to_string(lowWord) + '.' + extension);
    Answer& answer = known->second;
    if (!isNew) {
        if (answer.judgedHeads) {
            CarveContext::Instance().TsRunHead = 0;  // as judging leaves it
        }
        return answer.high;
    }
    const bool isKnownType = LookupTypeByExtension(extension) != FileTypeId::None;
    answer.high = FindHighWord(reader, lowWord, sectorOf, [&](ByteView sector, std::uint64_t lba) {
        answer.judgedHeads = isKnownType;
        return VerifyExtensionAtSector(sector, extension, reader.source, reader.sectorSize, lba);
    });
    return answer.high;
}

std::uint32_t HighWordSearch::OfFolder(const SectorReader& reader,
                                       std::uint64_t volumeTag,
                                       std::uint16_t lowWord,
                                       const ClusterSectorFunction& sectorOf)
{
    const auto [known, isNew] = m_answers[volumeTag].try_emplace(std::to_string(lowWord) + '/');
    if (isNew) {
        known->second.high =
            FindHighWord(reader, lowWord, sectorOf, [](ByteView sector, std::uint64_t /*lba*/) {
                return StartsWithDotEntries(sector);
            });
    }
    return known->second.high;
}
