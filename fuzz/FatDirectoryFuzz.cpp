// One directory sector as the root of a small FAT32 volume, through a quick scan with all that follows it.
#include "fuzz/ScratchImage.h"
#include "recovery/fat/FastFatRecovery.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t RootSector = 40;
    constexpr std::uint8_t Boot[] = {0xEB, 0x58, 0x90, 'F', 'U', 'Z', 'Z', ' ', ' ', ' ', ' ',
                                     0,    2,    1,    32,  0,   1,   0,   0,   0,   0,   0xF8};
    ByteVector image(64 * 1024);
    std::memcpy(image.data(), Boot, sizeof Boot);
    image[32] = 128;  // sectors in all
    image[36] = 8;    // a FAT of 8 sectors
    image[44] = 2;    // the root's cluster
    std::memcpy(image.data() + 82, "FAT32   ", 8);
    // After the root, whatever is left of the input: folders and files that its entries lead to.
    std::memcpy(image.data() + RootSector * 512, data,
                std::min(size, image.size() - RootSector * 512));
    const ScratchImage scratch(image.data(), image.size());
    CFastFatRecovery engine(OpenLog());
    (void)engine.OpenImageFile(scratch.Path(), 1001);
    (void)engine.Scan(nullptr);
    AskAndRestore(engine);
    return 0;
}
