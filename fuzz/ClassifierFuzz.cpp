// The classifiers of compound files and zips, with each sector of the input taken for a head in turn; once remembering what was
// looked through, once not.
#include "fuzz/MemorySource.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/formats/CompoundFile.h"
#include "recovery/carving/formats/ZipDocument.h"

#include <cstdlib>
#include <vector>

namespace {

std::vector<FileTypeId> Classify(const MemorySource& memory, bool remember)
{
    CarveContext& context = CarveContext::Instance();
    std::vector<FileTypeId> types;
    SectorSource source;
    memory.Open(source);
    context.source = &source;
    context.sectorSize = 512;
    for (std::uint64_t lba = 0; lba < memory.Sectors(); ++lba) {
        if (!remember) {
            memory.Open(source);
        }
        context.startLba = context.currentLba = lba;
        types.push_back(ClassifyOle2(memory.Sector(lba)));
        types.push_back(ClassifyOoxml());
    }
    context.source = nullptr;
    return types;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t Most = 64 * 512;
    ByteVector image(data, data + std::min(size, Most));
    image.resize(image.size() + 4 * 512);  // a turn of the zip's classifier after the last one
    const MemorySource memory(std::move(image));
    if (Classify(memory, true) != Classify(memory, false)) {
        std::abort();
    }
    return 0;
}
