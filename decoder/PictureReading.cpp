#include "decoder/PictureReading.h"

#include "decoder/DecoderProtocol.h"
#include "platform/ByteView.h"

#include <QElapsedTimer>
#include <QIODevice>
#include <QImageReader>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int LeastSide = 3;
constexpr std::size_t HeadBytes =
    65536;  // camera data and colour tables come before a picture's frame

// Others are no pictures, or can name files and addresses to be read beside.
constexpr std::array<const char*, 12> Formats = {"jpeg", "jpg", "png", "gif", "bmp", "webp",
                                                 "tiff", "tif", "ico", "pgm", "ppm", "pbm"};

// A file that gives nothing more when the time is over, which ends whatever reads it.
class TimedFile : public QIODevice
{
public:
    TimedFile(const FileHandle& file, std::uint64_t sizeBytes, std::chrono::milliseconds longest)
        : m_file(file), m_size(static_cast<qint64>(sizeBytes)), m_longest(longest.count())
    {
        m_clock.start();
        // What others read ahead here would come in pieces that are not timed.
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return false; }
    bool seek(qint64 position) override
    {
        m_at = position;
        return QIODevice::seek(position);
    }
    qint64 size() const override { return m_size; }

protected:
    qint64 readData(char* bytes, qint64 count) override
    {
        // All that is asked for: some readers take a short piece for the end, others for the whole.
        const qint64 wanted = std::min(count, m_size - m_at);
        std::size_t read = 0;
        if (m_clock.elapsed() > m_longest || wanted < 0 ||
            m_file.ReadAt(static_cast<std::uint64_t>(m_at), bytes, static_cast<std::size_t>(wanted),
                          &read) != ResultSuccess) {
            return -1;
        }
        m_at += static_cast<qint64>(read);
        return static_cast<qint64>(read);
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    const FileHandle& m_file;
    qint64 m_size;
    qint64 m_longest;
    qint64 m_at = 0;  // where the device stands, which runs ahead of where its reader does
    QElapsedTimer m_clock;
};

bool IsFrame(std::uint8_t marker)
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

// A frame that comes in several passes over the whole picture. Where none is found in the head it counts as one.
bool IsProgressiveJpeg(const FileHandle& file)
{
    std::vector<std::uint8_t> head(HeadBytes);
    std::size_t read = 0;
    if (file.ReadAt(0, head.data(), head.size(), &read) != ResultSuccess) {
        return true;
    }
    const ByteView view(head.data(), read);
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
              const FileHandle& file,
              const PictureLimits& limits)
{
    const std::int64_t pixels = std::int64_t{size.width()} * size.height();
    if (format != "jpeg") {
        return pixels * BytesAPixel <= std::int64_t{limits.mostMegabytes} << 20;
    }
    if (pixels > limits.mostPixels || pixels <= limits.mostPixelsOfProgressive) {
        return pixels <= limits.mostPixels;
    }
    return !IsProgressiveJpeg(file);
}

}  // namespace

QImage ReadPicture(const FileHandle& file, const PictureWish& wish, const PictureLimits& limits)
{
    TimedFile timed(file, wish.sizeBytes, limits.longest);
    QImageReader::setAllocationLimit(limits.mostMegabytes);
    QImageReader reader(&timed);
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
    if (wish.isRough) {
        constexpr int RoughQuality = 1;  // readers that know a quicker way take it
        reader.setQuality(RoughQuality);
    }
    if (size.width() > wish.mostSide || size.height() > wish.mostSide) {
        // One that is very long and thin would vanish.
        reader.setScaledSize(
            size.scaled(wish.mostSide, wish.mostSide, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    }
    const QImage picture = reader.read();
    const bool isSeen = picture.width() >= LeastSide || picture.height() >= LeastSide;
    return isSeen ? picture.convertToFormat(QImage::Format_ARGB32_Premultiplied) : QImage();
}
