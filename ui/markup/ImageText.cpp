#include "ui/markup/ImageText.h"

#include "ui/markup/Values.h"

#include <algorithm>
#include <array>

namespace {

// Where a stretched direction begins, changes and ends.
using Steps = std::array<int, 4>;

struct CutSpans
{
    Steps source;
    Steps target;
};

CutSpans CutDirection(
    int sourceStart, int sourceLength, int targetStart, int targetLength, int first, int last)
{
    // One pixel at least is left to be stretched, or a part of the target would stay empty.
    const int sourceFirst = std::clamp(first, 0, sourceLength - 1);
    const int sourceLast = std::clamp(last, 0, sourceLength - 1 - sourceFirst);
    const int targetFirst = std::min(sourceFirst, targetLength);
    const int targetLast = std::min(sourceLast, targetLength - targetFirst);
    const auto steps = [](int start, int length, int before, int behind) {
        return Steps{start, start + before, start + length - behind, start + length};
    };
    return {steps(sourceStart, sourceLength, sourceFirst, sourceLast),
            steps(targetStart, targetLength, targetFirst, targetLast)};
}

}  // namespace

ImageText ParseImageText(const QString& text)
{
    ImageText image;
    const std::vector<MarkupAttribute> items = ParseAttributeList(text);
    if (items.empty()) {
        image.file = text.trimmed();
        return image;
    }
    for (const MarkupAttribute& item : items) {
        if (item.name == QLatin1String("file")) {
            image.file = item.value;
        } else if (item.name == QLatin1String("source")) {
            image.source = ParseRect(item.value);
        } else if (item.name == QLatin1String("dest")) {
            image.dest = ParseRect(item.value);
        } else if (item.name == QLatin1String("corner")) {
            image.corner = ParseMargins(item.value);
        }
    }
    return image;
}

std::vector<ImagePiece> CutImage(const QRect& source, const QRect& target, const QMargins& corner)
{
    if (source.isEmpty() || target.isEmpty()) {
        return {};
    }
    const CutSpans x = CutDirection(source.left(), source.width(), target.left(), target.width(),
                                    corner.left(), corner.right());
    const CutSpans y = CutDirection(source.top(), source.height(), target.top(), target.height(),
                                    corner.top(), corner.bottom());
    std::vector<ImagePiece> pieces;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const auto rectOf = [row, column](const Steps& across, const Steps& down) {
                return QRect(across[column], down[row], across[column + 1] - across[column],
                             down[row + 1] - down[row]);
            };
            const ImagePiece piece = {rectOf(x.source, y.source), rectOf(x.target, y.target)};
            if (!piece.source.isEmpty() && !piece.target.isEmpty()) {
                pieces.push_back(piece);
            }
        }
    }
    return pieces;
}
