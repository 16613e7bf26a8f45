// Looks at the first sector of a file or folder: does it fit the name, and which high word of a cluster number makes it
// fit.
#pragma once

#include "platform/ByteView.h"
#include "storage/SectorSource.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

// A source with the size of its sectors, and the first sector past the target: clusters that lie past it are not
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

// Deleting an entry often wipes the high word of its cluster. Tries 0 to 256 in its place, until a cluster
// begins with a sector that fits the name, or with dot entries. 0 when none does, when one cannot be read, when one
// lies past the target, and for names without an extension.
//
// Many entries share a low word, so answers are kept: they are a matter of the disk alone. One engine owns it.
class HighWordSearch
{
public:
    void Clear() { m_answers.clear(); }
    // volumeTag tells apart the volumes that sectorOf stands for.
    std::uint32_t OfFile(const SectorReader& reader,
                         std::uint64_t volumeTag,
                         std::uint16_t lowWord,
                         std::string_view name,
                         const ClusterSectorFunction& sectorOf);
    std::uint32_t OfFolder(const SectorReader& reader,
                           std::uint64_t volumeTag,
                           std::uint16_t lowWord,
                           const ClusterSectorFunction& sectorOf);

private:
    struct Answer
    {
        std::uint32_t high = 0;
        bool judgedHeads = false;  // the carver's context has seen the search
    };

    // By volume, and by low word followed by the extension; "/" stands for folders.
    std::unordered_map<std::uint64_t, std::unordered_map<std::string, Answer>> m_answers;
};
