// A whole small image, from its boot sector on.
#include "fuzz/NtfsScanAll.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    ByteVector image(data, data + std::min<std::size_t>(size, 65536));
    image.resize(std::max<std::size_t>(image.size(), 4096));
    ScanAll(image);
    return 0;
}
