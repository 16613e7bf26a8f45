#include "ui/list/RowLook.h"

#include "ui/controls/ControlUI.h"

namespace {

constexpr int IconGap = 4;

QSize PictureSize(const Skin& skin, const ImageText& image)
{
    const QPixmap& picture = skin.Picture(image.file);
    return image.source ? image.source->size() : picture.size();
}

}  // namespace

bool SetRowLook(RowLook& look, const QString& name, const QString& value)
{
    using Setter = AttributeSetter<RowLook>;
    static constexpr std::array<Setter, 14> Table = {{
        {"itemheight",
         [](RowLook& row, const QString& text) { row.height = std::max(ParseNumber(text), 1); }},
        {"itemfont", [](RowLook& row, const QString& text) { row.font = ParseNumber(text); }},
        {"itemshowhtml",
         [](RowLook& row, const QString& text) { row.hasMarkup = ParseTruth(text); }},
        {"itemtextpadding",
         [](RowLook& row, const QString& text) { row.textPadding = ParseMargins(text); }},
        {"itemtextcolor",
         [](RowLook& row, const QString& text) { row.textColor = ParseColor(text); }},
        {"itemselectedtextcolor",
         [](RowLook& row, const QString& text) { row.selectedTextColor = ParseColor(text); }},
        {"itemdisabledtextcolor",
         [](RowLook& row, const QString& text) { row.disabledTextColor = ParseColor(text); }},
        {"itembkcolor",
         [](RowLook& row, const QString& text) { row.backColor = ParseColor(text); }},
        {"itemaltbkcolor",
         [](RowLook& row, const QString& text) { row.alternateColor = ParseColor(text); }},
        {"itemhotbkcolor",
         [](RowLook& row, const QString& text) { row.hotColor = ParseColor(text); }},
        {"itemselectedbkcolor",
         [](RowLook& row, const QString& text) { row.selectedColor = ParseColor(text); }},
        {"itemlinecolor",
         [](RowLook& row, const QString& text) { row.lineColor = ParseColor(text); }},
        {"itemselectedimage", [](RowLook& row, const QString& text) { row.selectedImage = text; }},
        {"itemhotimage", [](RowLook& row, const QString& text) { row.hotImage = text; }},
    }};
    return SetFromTable(Table, look, name, value);
}

void DrawRowGround(QPainter& painter,
                   const Skin& skin,
                   const RowLook& look,
                   const QRect& area,
                   bool isSelected,
                   bool isHot,
                   bool isSecond)
{
    QColor color = isSecond && look.alternateColor.isValid() ? look.alternateColor : look.backColor;
    if (isSelected) {
        color = look.selectedColor;
    } else if (isHot) {
        color = look.hotColor;
    }
    if (color.isValid()) {
        painter.fillRect(area, color);
    }
    if (look.lineColor.isValid()) {
        painter.fillRect(area.left(), area.bottom(), area.width(), 1, look.lineColor);
    }
    if (isSelected) {
        skin.DrawImage(painter, area, look.selectedImage);
    } else if (isHot) {
        skin.DrawImage(painter, area, look.hotImage);
    }
}

QRect IconArea(const Skin& skin, const QRect& cell, const QString& imageText)
{
    const ImageText image = ParseImageText(imageText);
    if (image.dest) {
        return image.dest->translated(cell.topLeft());
    }
    const QSize size = PictureSize(skin, image);
    return {cell.left() + IconGap, cell.top() + (cell.height() - size.height()) / 2, size.width(),
            size.height()};
}

void DrawCentered(QPainter& painter, const Skin& skin, const QRect& cell, const QString& imageText)
{
    QRect area(QPoint(0, 0), PictureSize(skin, ParseImageText(imageText)));
    area.moveCenter(cell.center());
    skin.DrawImage(painter, area, imageText);
}
