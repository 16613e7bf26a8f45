// Places the runs of a text in an area: one line cut with an ellipsis, or as many lines as it needs. Knows sizes only through
// TextMeasure.
#pragma once

#include "ui/markup/TextMarkup.h"

#include <QRect>
#include <QSize>
#include <QString>

#include <vector>

class TextMeasure
{
public:
    TextMeasure() = default;
    TextMeasure(const TextMeasure&) = delete;
    TextMeasure& operator=(const TextMeasure&) = delete;
    virtual ~TextMeasure() = default;

    // Pixels of a text in the font of that index; -1 is the control's own.
    virtual int Width(int font, const QString& text) const = 0;
    virtual int Ascent(int font) const = 0;
    virtual int Descent(int font) const = 0;
    // Of one frame; empty when the picture is missing.
    virtual QSize ImageSize(const TextRun& run) const = 0;
};

struct PlacedRun
{
    std::size_t run = 0;  // index into the runs
    QString text;         // the part of its text that stands here
    QRect rect;
    int baseline = 0;
};

struct TextLayout
{
    std::vector<PlacedRun> placed;  // texts and images only
    QSize size;                     // of all lines
    bool isCut = false;             // something does not show
};

struct TextArea
{
    QRect rect;
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter;
    bool wraps = false;
};

TextLayout
FlowText(const std::vector<TextRun>& runs, const TextMeasure& measure, const TextArea& area);
