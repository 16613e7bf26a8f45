#include "app/preview/PictureDecoding.h"

#include <memory>

namespace {

// Never destroyed: a thread may be at it yet when the statics of the process go. The decoder ends when the process is gone.
PictureDecoder& SharedDecoder()
{
    static auto* const decoder = new PictureDecoder;
    return *decoder;
}

void Release(void* picture)
{
    delete static_cast<DecodedPicture*>(picture);
}

// The picture keeps the pixels; nothing is copied.
QImage ImageOf(DecodedPicture decoded)
{
    if (decoded.IsNull()) {
        return {};
    }
    auto kept = std::make_unique<DecodedPicture>(std::move(decoded));
    const auto* const pixels = static_cast<const void*>(kept->pixels.data());
    const int width = kept->width;
    const int height = kept->height;
    return {static_cast<const uchar*>(pixels),   width,    height,        qsizetype{width} * 4,
            QImage::Format_ARGB32_Premultiplied, &Release, kept.release()};
}

}  // namespace

QImage DecodePicture(const std::filesystem::path& file)
{
    return ImageOf(SharedDecoder().Decode(file, PictureUse::Preview));
}

QImage DecodeThumbnail(std::span<const std::uint8_t> bytes)
{
    return ImageOf(SharedDecoder().Decode(bytes, PictureUse::Thumbnail));
}
