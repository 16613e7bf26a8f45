#include "ui/package/PngImage.h"

#include "ui/package/StbImage.h"

#include <climits>
#include <cstring>
#include <memory>

namespace {

constexpr int Channels = 4;

constexpr std::size_t SignatureBytes = 8;
constexpr std::size_t ChunkHeadBytes = 8;    // length and name
constexpr std::size_t ChunkFrameBytes = 12;  // and the checksum after the data

// Data in an empty first piece makes the library copy from nowhere; no encoder writes such a one.
bool HasEmptyData(ByteView bytes)
{
    std::size_t offset = SignatureBytes;
    // The library looks at a last piece that is cut after its name too.
    while (bytes.Covers(offset, ChunkHeadBytes)) {
        const std::size_t length = bytes.U32Be(offset);
        if (length == 0 && bytes.Matches(offset + 4, "IDAT")) {
            return true;
        }
        offset += ChunkFrameBytes + length;
    }
    return false;
}

struct FreePixels
{
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

}  // namespace

QImage DecodePng(ByteView bytes)
{
    if (bytes.Size() > INT_MAX || HasEmptyData(bytes)) {
        return {};
    }
    const int size = static_cast<int>(bytes.Size());
    int width = 0;
    int height = 0;
    int channels = 0;
    if (stbi_info_from_memory(bytes.Data(), size, &width, &height, &channels) == 0 || width <= 0 ||
        height <= 0 || width > MaxPngSide || height > MaxPngSide ||
        std::int64_t{width} * height > MaxPngPixels) {
        return {};
    }
    const std::unique_ptr<stbi_uc, FreePixels> pixels(
        stbi_load_from_memory(bytes.Data(), size, &width, &height, &channels, Channels));
    if (!pixels) {
        return {};
    }
    QImage image(width, height, QImage::Format_RGBA8888);
    if (image.isNull()) {
        return {};
    }
    const std::size_t lineBytes = static_cast<std::size_t>(width) * Channels;
    for (int y = 0; y < height; ++y) {
        std::memcpy(image.scanLine(y), pixels.get() + static_cast<std::size_t>(y) * lineBytes,
                    lineBytes);
    }
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}
