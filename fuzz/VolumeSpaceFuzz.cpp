// A volume's own tables, from which its free space is counted, whatever they hold.
#include "storage/VolumeSpace.h"

#include "fuzz/MemorySource.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemorySource source(ByteVector(data, data + size));
    OpenedSource opened;
    VolumeSpace space;
    // Told to be larger than what there is to read, as a cut image is.
    if (OpenImageSource("/dev/null", opened) == ResultSuccess &&
        ReadVolumeSpace(*opened.reader, 0, std::uint64_t{size} * 2, space) &&
        space.freeBytes > space.totalBytes) {
        std::abort();  // more is free than there is
    }
    return 0;
}
