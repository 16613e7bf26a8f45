// Looks at the first sector of a file or folder: does it fit the name, and which high word of a cluster number makes it
// fit.
#pragma once

#include "platform/ByteView.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <string_view>

// A source with the size of its sectors, and the first sector behind the target: clusters that lie behind it are not
// looked at.
struct SectorReader
{
    SectorSource& source;
    std::int32_t sectorSize = 512;
    std::uint64_t endLba = 0;
};

// Where a cluster begins.
using ClusterSectorFunction = std::function<std::uint64_t(std::uint32_t cluster)>;

// Whether the sector fits the extension of the name. True as well when it cannot be judged: no extension, or a sector
// that cannot be read.
bool HeadFitsName(const SectorReader& reader, std::string_view name, std::uint64_t lba);

// Deleting an entry often wipes the high word of its cluster. Tries 0 to 256 in front of the low word, until a cluster
// begins with a sector that fits the name, or with dot entries. 0 when none does, when one cannot be read, when one
// lies behind the target, and for names without an extension.
std::uint32_t FindHighWordOfFile(const SectorReader& reader,
                                 std::uint16_t lowWord,
                                 std::string_view name,
                                 const ClusterSectorFunction& sectorOf);
std::uint32_t FindHighWordOfFolder(const SectorReader& reader,
                                   std::uint16_t lowWord,
                                   const ClusterSectorFunction& sectorOf);
