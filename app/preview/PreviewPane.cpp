#include "app/preview/PreviewPane.h"

#include "app/preview/PictureDecoder.h"
#include "ui/controls/RichEditUI.h"

#include <algorithm>

namespace {

constexpr int TwipsAnInch = 1440;
constexpr int PixelsAnInch = 96;
constexpr std::size_t DumpLine = 1024;
// A pane takes seconds for a megabyte, and nobody reads that far.
constexpr std::size_t MostDumped = 256 * 1024;

}  // namespace

bool InsertPicture(CRichEditUI* pane,
                   const std::filesystem::path& path,
                   const QString& fallback,
                   int width,
                   int height)
{
    std::error_code error;
    if (pane == nullptr || path.empty() || !std::filesystem::exists(path, error)) {
        return false;
    }
    if (!pane->InsertPicture(DecodePicture(path), width, height)) {
        ShowText(*pane, fallback, FallbackSpacing);
    }
    return true;
}

void ShowText(CRichEditUI& pane, const QString& text, int spacing)
{
    pane.ShowText(text + QLatin1Char('\n'), spacing > 0 ? spacing * PixelsAnInch / TwipsAnInch : 0);
}

QString DumpText(std::span<const std::uint8_t> bytes)
{
    QString text;
    text.reserve(static_cast<qsizetype>(bytes.size() + bytes.size() / DumpLine * 2 + 2));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        text += bytes[i] == 0 ? QLatin1Char('.') : QLatin1Char(static_cast<char>(bytes[i]));
        if ((i + 1) % DumpLine == 0) {
            text += QLatin1String("\r\n");
        }
    }
    if (bytes.empty() || bytes.size() % DumpLine != 0) {
        text += QLatin1String("\r\n");
    }
    return text;
}

void ShowDump(CRichEditUI& pane, std::span<const std::uint8_t> bytes)
{
    pane.ShowFixedText(DumpText(bytes.first(std::min(bytes.size(), MostDumped))));
}
