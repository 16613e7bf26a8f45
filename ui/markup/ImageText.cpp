#include "ui/markup/ImageText.h"

#include "ui/markup/Values.h"

#include <algorithm>
#include <array>

namespace {

// Where a stretched direction begins, changes and ends.
using Steps = std::array<int, 4>;

Steps CutSpan(int start, int length, int first, int last)
{
    const int before = std::clamp(first, 0, length);
    const int behind = std::clamp(last, 0, length - before);
    return {start, start + before, start + length - behind, start + length};
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
    const auto cut = [&corner](const QRect& rect) {
        return std::pair{CutSpan(rect.left(), rect.width(), corner.left(), corner.right()),
                         CutSpan(rect.top(), rect.height(), corner.top(), corner.bottom())};
    };
    const auto [sourceX, sourceY] = cut(source);
    const auto [targetX, targetY] = cut(target);
    std::vector<ImagePiece> pieces;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const auto rectOf = [row, column](const Steps& x, const Steps& y) {
                return QRect(x[column], y[row], x[column + 1] - x[column], y[row + 1] - y[row]);
            };
            const ImagePiece piece = {rectOf(sourceX, sourceY), rectOf(targetX, targetY)};
            if (!piece.source.isEmpty() && !piece.target.isEmpty()) {
                pieces.push_back(piece);
            }
        }
    }
    return pieces;
}
