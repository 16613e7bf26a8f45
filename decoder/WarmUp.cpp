#include "decoder/WarmUp.h"

#include "decoder/PictureReading.h"
#include "platform/SharedMemory.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace {

// So large that it is scaled on threads, which have to be known by then.
constexpr int Side = 1024;
constexpr int ScaledSide = 600;

constexpr std::array<const char*, 8> Written = {"jpeg", "png", "bmp", "webp",
                                                "tiff", "ico", "ppm", "pbm"};

// Of one pixel; there is nothing that writes one.
constexpr std::array<std::uint8_t, 35> Gif = {'G', 'I', 'F', '8', '9', 'a', 1,   0,   1, 0, 0x80, 0,
                                              0,   0,   0,   0,   255, 255, 255, ',', 0, 0, 0,    0,
                                              1,   0,   1,   0,   0,   2,   2,   'D', 1, 0, ';'};

void Read(std::span<const std::uint8_t> bytes)
{
    FileHandle picture;
    if (ShareBytes(bytes, picture) == ResultSuccess) {
        (void)ReadPicture(picture, {bytes.size(), ScaledSide, false});
    }
}

}  // namespace

void WarmUpDecoders()
{
    (void)QImageReader::supportedImageFormats();  // loads what reads them
    QImage image(Side, Side, QImage::Format_ARGB32);
    image.fill(Qt::gray);
    for (const char* const format : Written) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        // One that is not installed is not read later either.
        if (QImageWriter(&buffer, format).write(image)) {
            const std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
            Read(copy);
        }
    }
    Read(Gif);
}
