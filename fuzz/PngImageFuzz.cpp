// A picture of the skin.
#include "ui/package/PngImage.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QImage image = DecodePng(ByteView(data, size));
    if (std::int64_t{image.width()} * image.height() > MaxPngPixels) {
        std::abort();
    }
    return 0;
}
