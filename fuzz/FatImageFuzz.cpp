// A whole small FAT image through the quick engine: opening, the map of used clusters, scan, listing, search, restore and
// preview.
#include "fuzz/ScratchImage.h"
#include "recovery/fat/FastFatRecovery.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchImage scratch(data, size);
    CFastFatRecovery engine(OpenLog());
    if (engine.OpenImageFile(scratch.Path(), 1001) != ResultSuccess) {
        return 0;
    }
    (void)engine.BuildUsedClusterMap();
    std::uint64_t sector = 0;
    std::uint64_t length = 0;
    for (std::uint64_t end = 0; engine.NextFreeRange(sector, length) != 0 && length != 0;
         end = sector) {
        if (sector < end) {
            std::abort();  // a pass over these would never end
        }
        sector += length;
        length = 0;
    }
    (void)engine.Scan(nullptr);
    AskAndRestore(engine);
    return 0;
}
