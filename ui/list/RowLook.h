// How the rows of a list or tree look; told by the attributes of the view, all of which begin with "item".
#pragma once

#include "ui/markup/Skin.h"

#include <QColor>
#include <QMargins>
#include <QString>

struct RowLook
{
    int height = 24;
    int font = -1;
    bool hasMarkup = false;
    QMargins textPadding = {4, 0, 4, 0};
    QColor textColor = Qt::black;
    QColor selectedTextColor;
    QColor disabledTextColor = {0xA0, 0xA0, 0xA0};
    QColor backColor;
    QColor alternateColor;  // of every second row
    QColor hotColor = {0xE8, 0xF4, 0xFA};
    QColor selectedColor = {0xC8, 0xE6, 0xF5};
    QColor lineColor;  // below each row
    QString selectedImage;
    QString hotImage;
};

// False for an attribute that is none of a row's look.
bool SetRowLook(RowLook& look, const QString& name, const QString& value);

// What is drawn of one row, before its cells.
void DrawRowGround(QPainter& painter,
                   const Skin& skin,
                   const RowLook& look,
                   const QRect& area,
                   bool isSelected,
                   bool isHot,
                   bool isSecond);

// Where a picture stands in a cell: at its own "dest", or in its own size at the left, in the middle of the height.
QRect IconArea(const Skin& skin, const QRect& cell, const QString& imageText);
// In the middle of the cell, in its own size.
void DrawCentered(QPainter& painter, const Skin& skin, const QRect& cell, const QString& imageText);
