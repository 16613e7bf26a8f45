// A run list at any sector size. Cut anywhere, it must give the same runs, only fewer. The input is the number of
// 512-byte units in a sector, then an attribute.
#include "recovery/metadata/NtfsRecordCodec.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ByteView input(data, size);
    NtfsRecordCodec codec;
    (void)codec.SetSectorSize(512U * (1 + input.U8(0) % 127U));
    const ByteView attribute = input.Sub(1);
    RunList whole;
    codec.DecodeRunList(attribute, whole);
    RunList part;
    codec.DecodeRunList(attribute.Sub(0, attribute.Size() / 2), part);
    if (part.size() > whole.size() || !std::equal(part.begin(), part.end(), whole.begin())) {
        std::abort();
    }
    for (const NtfsRun& run : whole) {
        if (run.Length > UINT32_MAX) {
            std::abort();
        }
    }
    return 0;
}
