// A small image through the whole deep scan: quick engine, pass, analysers, search, restore, and once more resumed.
#include "fuzz/ScratchImage.h"
#include "recovery/engines/RecoveryEngineFactory.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchImage image(data, size);
    for (int round = 0; round < 2; ++round) {
        const auto engine = RecoveryEngineFactory(OpenLog()).MakeEngineForImage(image.Path(), 1001,
                                                                                ScanDepth::Deep);
        (void)engine->Scan(nullptr);
        AskAndRestore(*engine);
    }
    return 0;
}
