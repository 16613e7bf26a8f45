// The texts that name a picture: "file='a.png' source='0,0,16,16' dest='0,4,16,20' corner='0,0,0,70'", or a file name alone.
#pragma once

#include <QMargins>
#include <QRect>
#include <QString>

#include <optional>
#include <vector>

struct ImageText
{
    QString file;
    std::optional<QRect> source;  // the part of the picture; all of it otherwise
    std::optional<QRect> dest;    // where in the control, from its top left; all of it otherwise
    QMargins corner;  // borders of the picture that keep their size while the middle is stretched
};

// An item that is unknown is left aside.
ImageText ParseImageText(const QString& text);

// What to draw: a part of the picture and where it goes.
struct ImagePiece
{
    QRect source;
    QRect target;
};

// At most nine pieces; borders that do not fit are made smaller.
std::vector<ImagePiece> CutImage(const QRect& source, const QRect& target, const QMargins& corner);
