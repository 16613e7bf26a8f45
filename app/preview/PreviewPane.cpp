#include "app/preview/PreviewPane.h"

#include "app/preview/PictureDecoding.h"
#include "ui/controls/RichEditUI.h"

#include <QEventLoop>
#include <QPointer>

#include <algorithm>
#include <new>
#include <thread>

namespace {

constexpr int TwipsAnInch = 1440;
constexpr int PixelsAnInch = 96;
constexpr std::size_t DumpLine = 1024;
// A pane takes seconds for a megabyte, and nobody reads that far.
constexpr std::size_t MostDumped = std::size_t{256} * 1024;

// A large picture takes seconds: the windows are drawn meanwhile, and what the user does comes afterwards.
QImage DecodeMeanwhile(const std::filesystem::path& path)
{
    QImage picture;
    QEventLoop loop;
    std::thread decoder([&] {
        try {
            picture = DecodePicture(path);
        } catch (const std::bad_alloc&) {
            picture = {};  // too large for this computer
        }
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    decoder.join();
    return picture;
}

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
    const QPointer<CRichEditUI> kept = pane;
    const QImage picture = DecodeMeanwhile(path);
    if (kept && !kept->InsertPicture(picture, width, height)) {
        ShowText(*kept, fallback, FallbackSpacing);
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
    const std::size_t lineEnds = 2 * (bytes.size() / DumpLine + 1);
    text.reserve(static_cast<qsizetype>(bytes.size() + lineEnds));
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
