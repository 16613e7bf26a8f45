#include "app/preview/PictureDecoder.h"

#include "platform/ByteView.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <array>

namespace {

constexpr int LeastSide = 3;
constexpr std::int64_t BytesAPixel = 4;
constexpr int HeadBytes =
    64 * 1024;  // camera data and colour tables stand in front of a picture's frame

// Others are no pictures, or can name files and addresses to be read beside.
constexpr std::array<const char*, 12> Formats = {"jpeg", "jpg", "png", "gif", "bmp", "webp",
                                                 "tiff", "tif", "ico", "pgm", "ppm", "pbm"};

// A file that gives nothing more when the time is over, which ends whatever reads it.
class TimedFile : public QFile
{
public:
    TimedFile(const QString& path, std::chrono::milliseconds longest)
        : QFile(path), m_longest(longest.count())
    {
        m_clock.start();
    }
    bool IsOver() const { return m_clock.elapsed() > m_longest; }

protected:
    qint64 readData(char* bytes, qint64 count) override
    {
        // In pieces so small that none keeps a decoder busy for long: a hundred bytes can mean a pass over all of a picture.
        constexpr qint64 MostAtOnce = 512;
        return IsOver() ? -1 : QFile::readData(bytes, std::min(count, MostAtOnce));
    }

private:
    qint64 m_longest;
    QElapsedTimer m_clock;
};

bool IsFrame(std::uint8_t marker)
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// A frame that comes in several passes over the whole picture. Where none is found in the head it counts as one.
bool IsProgressiveJpeg(const QByteArray& head)
{
    const auto* const bytes = head.constData();
    const std::vector<std::uint8_t> copy(bytes, bytes + head.size());
    const ByteView view(copy.data(), copy.size());
    std::size_t at = 2;
    while (view.Covers(at, 4) && view.U8(at) == 0xFF) {
        const std::uint8_t marker = view.U8(at + 1);
        if (IsFrame(marker)) {
            return marker != 0xC0 && marker != 0xC1;
        }
        at += marker == 0xFF ? std::size_t{1} : std::size_t{2} + view.U16Be(at + 2);
    }
    return true;
}

bool IsWithin(const QSize& size,
              const QByteArray& format,
              TimedFile& file,
              const PictureLimits& limits)
{
    const std::int64_t pixels = std::int64_t{size.width()} * size.height();
    if (format != "jpeg") {
        return pixels * BytesAPixel <= std::int64_t{limits.mostMegabytes} << 20;
    }
    if (pixels > limits.mostPixels || pixels <= limits.mostPixelsOfProgressive) {
        return pixels <= limits.mostPixels;
    }
    QFile head(file.fileName());
    return head.open(QIODevice::ReadOnly) && !IsProgressiveJpeg(head.read(HeadBytes));
}

}  // namespace

QImage DecodePicture(const std::filesystem::path& path, const PictureLimits& limits)
{
    TimedFile file(QString::fromStdString(path.string()), limits.longest);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return {};
    }
    QImageReader::setAllocationLimit(limits.mostMegabytes);
    QImageReader reader(&file);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    const QByteArray format = reader.format();
    if (std::find(Formats.begin(), Formats.end(), format) == Formats.end()) {
        return {};
    }
    const QSize size = reader.size();
    if (!IsWithin(size, format, file, limits)) {
        return {};
    }
    if (size.width() > limits.mostSide || size.height() > limits.mostSide) {
        // One that is very long and thin would vanish.
        reader.setScaledSize(size.scaled(limits.mostSide, limits.mostSide, Qt::KeepAspectRatio)
                                 .expandedTo(QSize(1, 1)));
    }
    const QImage picture = reader.read();
    const bool isSeen = picture.width() >= LeastSide || picture.height() >= LeastSide;
    return isSeen ? picture : QImage();
}
