// Attribute values as the markup writes them. Whatever a value holds, reading it gives a number within bounds that can be
// added up without harm.
#pragma once

#include <QColor>
#include <QMargins>
#include <QRect>
#include <QSize>
#include <QString>

#include <optional>
#include <vector>

struct MarkupAttribute
{
    QString name;
    QString value;

    bool operator==(const MarkupAttribute&) const = default;
};

// width="32" textcolor='#FF505050': names with quoted values. Reading ends where the text stops being that.
std::vector<MarkupAttribute> ParseAttributeList(const QString& text);

// Far beyond any window; larger numbers are cut to it.
inline constexpr int MaxMarkupNumber = 100000;

// 0 for what is no number.
int ParseNumber(const QString& text);
bool ParseTruth(const QString& text);
// "#AARRGGBB" or "#RRGGBB"; invalid for anything else.
QColor ParseColor(const QString& text);
// Numbers separated by commas, missing ones 0: "width,height", "left,top,right,bottom".
QSize ParseSize(const QString& text);
QMargins ParseMargins(const QString& text);
// An upside-down rectangle is empty.
QRect ParseRect(const QString& text);
// "left", "center", "right", "top", "vcenter", "bottom", separated by blanks or commas; the direction that is not told keeps
// the default.
Qt::Alignment ParseAlignment(const QString& text, Qt::Alignment defaults);
