// The tests for file-system metadata, on the input cut at every entry border and as a sector.
#include "recovery/carving/BoundaryScan.h"
#include "recovery/metadata/SectorValidators.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ByteView input(data, std::min<std::size_t>(size, 4096));
    for (std::size_t at = 0; at <= input.Size(); at += DirEntryBytes) {
        const ByteView rest = input.Sub(at);
        (void)IsValidDirEntry(rest);
        (void)IsBadShortName(rest);
        (void)IsFatDotEntries(rest);
        (void)ShortNameChecksum(rest);
    }
    for (const std::size_t sector : {std::size_t{512}, std::size_t{4096}, input.Size()}) {
        (void)IsFatDirectorySector(input.Sub(0, sector));
        (void)IsFileSystemMetadataSector(input.Sub(0, sector));
        (void)IsMftRecord(input.Sub(0, sector), 1024);
    }
    return 0;
}
