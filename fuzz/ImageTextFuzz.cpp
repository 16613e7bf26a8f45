// The texts that name pictures, and the cutting into nine: the pieces lie in the picture and fill the target.
#include "ui/markup/ImageText.h"

#include "ui/markup/Values.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(data, data + std::min<std::size_t>(size, 4096));
    const QString text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    const ImageText image = ParseImageText(text);
    const QRect picture(0, 0, 20, 40);
    const QRect source = image.source.value_or(picture).intersected(picture);
    const QRect target = image.dest.value_or(QRect(3, 4, 100, 50));
    std::int64_t filled = 0;
    for (const ImagePiece& piece : CutImage(source, target, image.corner)) {
        if (!picture.contains(piece.source) || !target.contains(piece.target)) {
            std::abort();
        }
        filled += std::int64_t{piece.target.width()} * piece.target.height();
    }
    const bool isDrawn = !source.isEmpty() && !target.isEmpty();
    if (isDrawn && filled != std::int64_t{target.width()} * target.height()) {
        std::abort();
    }
    return 0;
}
