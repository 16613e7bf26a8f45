// The table over 300 sectors: every sector is tried and what fires is measured, once with all that the carver remembers of
// what it read, once with nothing; the files must be the same. The input is the byte that fills the image, then pieces:
// sector and offset (16 bits each), count, bytes.
#include "fuzz/MemorySource.h"
#include "recovery/carving/CarveContext.h"
#include "recovery/carving/CarveDriver.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr std::uint64_t Sectors = 300;

ByteVector MakeImage(ByteView input)
{
    ByteVector image(Sectors * 512, input.U8(0));
    std::size_t at = 1;
    while (input.Covers(at, 5)) {
        const std::size_t target = input.U16(at) % Sectors * 512 + input.U16(at + 2) % 512;
        const ByteView piece = input.Sub(at + 5, input.U8(at + 4));
        std::copy_n(piece.Data(), std::min(piece.Size(), image.size() - target),
                    image.data() + target);
        at += 5 + piece.Size();
    }
    return image;
}

std::vector<std::string> Carve(const MemorySource& memory, bool remember)
{
    CarveContext& context = CarveContext::Instance();
    context.TsRunHead = 1;
    context.InsideMts = 0;
    context.TsRangeList.Clear();
    std::vector<std::string> files;
    SectorSource source;
    memory.Open(source);
    for (std::uint64_t lba = 0; lba < Sectors; ++lba) {
        if (!remember) {
            memory.Open(source);
        }
        CarvedHead head;
        const ResultCode result =
            TrySignatureTable(memory.Sector(lba), lba, {lba, Sectors, -1, 0}, source, 512, head);
        if (result == ResultSuccess) {
            files.push_back(head.name + ' ' + std::to_string(head.lengthBytes));
            if (head.lengthBytes < 0) {
                std::abort();
            }
        }
    }
    return files;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemorySource memory(MakeImage(ByteView(data, size)));
    if (Carve(memory, true) != Carve(memory, false)) {
        std::abort();
    }
    // Every row's functions by themselves, on the first sector and on as much of it as was given.
    SectorSource source;
    memory.Open(source);
    LengthFunction before = nullptr;
    for (const SignatureEntry& row : SignatureTable()) {
        const auto given = static_cast<std::int32_t>(std::min<std::size_t>(size, 512));
        if (row.detect != nullptr) {
            (void)VerifyExtensionAtSector(ByteView(data, given), row.extension, source, 512, 0);
        }
        if (row.length != nullptr && row.length != before) {
            (void)row.length(data, given);
            before = row.length;
        }
    }
    return 0;
}
