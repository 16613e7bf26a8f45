// The small markup inside texts: "{f 5}{c #316D1E}12{/c}{/f} files", also written with < and >. It becomes a list of runs.
//
// Nothing is an error: an unknown tag draws nothing, what is still open ends with the text, a closing tag without an opening
// one does nothing. Names from disks are put in by PlainRun(), so that they are never read as markup.
#pragma once

#include <QColor>
#include <QString>

#include <vector>

enum class RunKind
{
    Text,
    Space,
    Image,
    LineBreak,
};

struct TextRun
{
    RunKind kind = RunKind::Text;
    QString text = {};   // of a text
    int space = 0;       // pixels of a space; negative moves back
    QString image = {};  // file of an image, which stands as frames side by side
    int frames = 1;      // how many
    int frame = 0;       // which one, from 0
    int font = -1;       // index into the window's fonts; -1 for the control's own
    QColor color = {};   // invalid for the control's own
    int link = -1;       // number of the clickable span that it belongs to, from 0

    bool operator==(const TextRun&) const = default;
};

// Longer texts are cut: nothing that a window shows comes near it.
inline constexpr qsizetype MaxMarkupText = 65536;

// Without markup the text is one run, or one a line.
std::vector<TextRun> ParseTextMarkup(const QString& text, bool hasMarkup);

// The value between marks that keep it from being read as markup, wherever it is put in afterwards. The marks are code points
// that no text has; those that the value holds all the same are dropped.
QString PlainRun(const QString& value);

// What is read out and copied: the texts of the runs, with a blank for what stands between.
QString PlainText(const std::vector<TextRun>& runs);
QString PlainText(const QString& text, bool hasMarkup);
