#include "ui/markup/Skin.h"

#include <QFontMetrics>

#include <algorithm>
#include <utility>

namespace {

constexpr int MaxFonts = 64;
constexpr int MaxPoints = 200;
constexpr int PixelsAnInch = 96;
constexpr int PointsAnInch = 72;
// Pictures beyond this are loaded anew each time; the whole skin takes a tenth of it.
constexpr std::int64_t MaxPictureBytes = std::int64_t{128} << 20;
constexpr qsizetype MaxImageTexts = 4096;
constexpr QLatin1String PictureEnding(".png");
constexpr QLatin1String DoubleEnding("@2x.png");

// Points become pixels by themselves: the layout is told in pixels and must not move with the desktop's setting.
QFont MakeFont(const QString& family, int points, bool isBold)
{
    QFont font(family);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(std::clamp(points, 1, MaxPoints) * PixelsAnInch / PointsAnInch);
    font.setBold(isBold);
    return font;
}

class SkinMeasure : public TextMeasure
{
public:
    SkinMeasure(const Skin& skin, int font) : m_skin(skin), m_font(font) {}

    int Width(int font, const QString& text) const override
    {
        return Metrics(font).horizontalAdvance(text);
    }
    int Ascent(int font) const override { return Metrics(font).ascent(); }
    int Descent(int font) const override { return Metrics(font).descent(); }
    QSize ImageSize(const TextRun& run) const override
    {
        const QSize size = m_skin.Picture(run.image).size();
        return {size.width() / run.frames, size.height()};
    }
    const QFont& FontOf(int font) const { return m_skin.Font(font < 0 ? m_font : font); }

private:
    QFontMetrics Metrics(int font) const { return QFontMetrics(FontOf(font)); }

    const Skin& m_skin;
    int m_font;
};

const std::vector<MarkupAttribute>&
FindIn(const std::map<QString, std::vector<MarkupAttribute>>& attributes, const QString& name)
{
    static const std::vector<MarkupAttribute> none;
    const auto found = attributes.find(name);
    return found == attributes.end() ? none : found->second;
}

}  // namespace

Skin::Skin(std::shared_ptr<SkinPackage> package)
    : m_package(std::move(package)), m_defaultFont(MakeFont(QStringLiteral("Tahoma"), 11, false))
{
}

void Skin::AddFont(const QString& family, int points, bool isBold, bool isDefault)
{
    if (m_fonts.size() >= MaxFonts) {
        return;
    }
    m_fonts.push_back(MakeFont(family, points, isBold));
    if (isDefault) {
        m_defaultFont = m_fonts.back();
    }
}

const QFont& Skin::Font(int index) const
{
    return index >= 0 && index < static_cast<int>(m_fonts.size())
               ? m_fonts[static_cast<std::size_t>(index)]
               : m_defaultFont;
}

void Skin::SetStyle(const QString& name, const std::vector<MarkupAttribute>& attributes)
{
    m_styles[name] = attributes;
}

void Skin::SetDefault(const QString& element, const std::vector<MarkupAttribute>& attributes)
{
    m_defaults[element] = attributes;
}

const std::vector<MarkupAttribute>& Skin::Style(const QString& name) const
{
    return FindIn(m_styles, name);
}

const std::vector<MarkupAttribute>& Skin::Default(const QString& element) const
{
    return FindIn(m_defaults, element);
}

const QPixmap& Skin::Picture(const QString& file) const
{
    const auto found = m_pictures.constFind(file);
    if (found != m_pictures.constEnd()) {
        return *found;
    }
    QImage image;
    if (const auto bytes = m_package->Read(file)) {
        image = DecodePng(ByteView(*bytes));
    }
    if (m_pictureBytes > MaxPictureBytes) {
        m_pictures.clear();
        m_pictureBytes = 0;
    }
    m_pictureBytes += image.sizeInBytes();
    return *m_pictures.insert(file, QPixmap::fromImage(image));
}

void Skin::DrawPicture(QPainter& painter,
                       const QRect& target,
                       const QString& file,
                       const QRect& source) const
{
    const bool wasSmooth = painter.testRenderHint(QPainter::SmoothPixmapTransform);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QSize size = Picture(file).size();
    if (painter.device()->devicePixelRatioF() > 1 && file.endsWith(PictureEnding)) {
        const QString doubleFile = file.chopped(PictureEnding.size()) + DoubleEnding;
        const QPixmap& picture = Picture(doubleFile);
        if (picture.size() == size * 2) {
            painter.drawPixmap(target, picture, {source.topLeft() * 2, source.size() * 2});
            painter.setRenderHint(QPainter::SmoothPixmapTransform, wasSmooth);
            return;
        }
    }
    painter.drawPixmap(target, Picture(file), source);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, wasSmooth);
}

bool Skin::AddColor(const QString& name, const QString& value)
{
    const bool isColor = ParseColor(value).isValid();
    if (isColor) {
        m_colors[name] = value;
    }
    return isColor;
}

QString Skin::WithColors(const QString& value) const
{
    QString text;
    qsizetype copied = 0;
    for (qsizetype at = value.indexOf(QLatin1Char('$')); at >= 0;
         at = value.indexOf(QLatin1Char('$'), at + 1)) {
        qsizetype end = at + 1;
        while (end < value.size() && value[end].isLetterOrNumber()) {
            ++end;
        }
        const auto color = m_colors.find(value.mid(at + 1, end - at - 1));
        if (color != m_colors.end()) {
            text += QStringView(value).mid(copied, at - copied);
            text += color->second;
            copied = end;
        }
    }
    return text + value.mid(copied);
}

void Skin::DrawImage(QPainter& painter, const QRect& area, const QString& imageText) const
{
    if (imageText.isEmpty()) {
        return;
    }
    if (m_imageTexts.size() > MaxImageTexts) {
        m_imageTexts.clear();
    }
    auto image = m_imageTexts.constFind(imageText);
    if (image == m_imageTexts.constEnd()) {
        image = m_imageTexts.insert(imageText, ParseImageText(imageText));
    }
    const QPixmap& picture = Picture(image->file);
    const QRect source = image->source.value_or(picture.rect()).intersected(picture.rect());
    const QRect target = image->dest ? image->dest->translated(area.topLeft()) : area;
    for (const ImagePiece& piece : CutImage(source, target, image->corner)) {
        DrawPicture(painter, piece.target, image->file, piece.source);
    }
}

TextLayout MeasureRuns(const Skin& skin, const std::vector<TextRun>& runs, const TextStyle& style)
{
    return FlowText(runs, SkinMeasure(skin, style.font), style.area);
}

TextLayout DrawRuns(QPainter& painter,
                    const Skin& skin,
                    const std::vector<TextRun>& runs,
                    const TextStyle& style)
{
    const SkinMeasure measure(skin, style.font);
    TextLayout layout = FlowText(runs, measure, style.area);
    painter.save();
    // Letters may reach a pixel further than their font says; only a text without room must stay inside.
    if (layout.isCut) {
        painter.setClipRect(style.area.rect, Qt::IntersectClip);
    }
    for (const PlacedRun& placed : layout.placed) {
        const TextRun& run = runs[placed.run];
        if (run.kind == RunKind::Image) {
            const QPixmap& picture = skin.Picture(run.image);
            const int width = picture.width() / run.frames;
            skin.DrawPicture(painter, placed.rect, run.image,
                             {width * run.frame, 0, width, picture.height()});
            continue;
        }
        painter.setFont(measure.FontOf(run.font));
        painter.setPen(run.color.isValid() ? run.color : style.color);
        painter.drawText(placed.rect.left(), placed.baseline, placed.text);
    }
    painter.restore();
    return layout;
}

int LinkAt(const std::vector<TextRun>& runs, const TextLayout& layout, const QPoint& place)
{
    for (const PlacedRun& placed : layout.placed) {
        if (runs[placed.run].link >= 0 && placed.rect.contains(place)) {
            return runs[placed.run].link;
        }
    }
    return -1;
}

void DrawFocusMark(QPainter& painter, const QRect& area)
{
    painter.save();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QColor(0, 0x3C, 0x64));
    painter.drawRect(area.adjusted(0, 0, -1, -1));
    painter.setPen(Qt::white);
    painter.drawRect(area.adjusted(1, 1, -2, -2));
    painter.restore();
}
