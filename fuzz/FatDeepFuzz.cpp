// Directory sectors through the deep FAT analysis, with the same bytes as the source behind it: intake in disk order,
// the end of the pass, search, paths. The input is an image; what the validators let through is shown.
#include "fuzz/ScratchImage.h"
#include "recovery/fat/ProfessionalFatRecovery.h"
#include "recovery/metadata/SectorValidators.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchImage image(data, size);
    CProfessionalFatRecovery engine(OpenLog());
    (void)engine.OpenImageFile(image.Path(), 1001);
    (void)engine.OpenRecordStore("");
    (void)engine.PrepareVolume();
    for (std::size_t at = 0; at + 512 <= size; at += 512) {
        const ByteView sector(data + at, 512);
        if (IsFatDotEntries(sector)) {
            engine.AddDirectoryStart(sector, at / 512);
        } else if (IsFatDirectorySector(sector)) {
            engine.AddDirectorySector(sector, at / 512);
        }
    }
    (void)engine.FinishAnalysis([] { return ResultSuccess; });
    AskAndRestore(engine);
    return 0;
}
