// What the controls of one window share: its fonts, styles and defaults, and the pictures of the package. Lives as long as one
// of the controls; user-interface thread.
#pragma once

#include "ui/markup/ImageText.h"
#include "ui/markup/TextFlow.h"
#include "ui/markup/Values.h"
#include "ui/package/PngImage.h"
#include "ui/package/SkinPackage.h"

#include <QColor>
#include <QFont>
#include <QHash>
#include <QPainter>
#include <QPixmap>

#include <map>
#include <memory>
#include <vector>

class Skin
{
public:
    explicit Skin(std::shared_ptr<SkinPackage> package);

    const SkinPackage& Package() const { return *m_package; }

    // Fonts are numbered in the order in which they are added.
    void AddFont(const QString& family, int points, bool isBold, bool isDefault);
    // The default one for an index that there is none of.
    const QFont& Font(int index) const;
    // Whole and shared with every control until it changes.
    void SetStyle(const QString& name, const std::vector<MarkupAttribute>& attributes);
    void SetDefault(const QString& element, const std::vector<MarkupAttribute>& attributes);
    const std::vector<MarkupAttribute>& Style(const QString& name) const;
    const std::vector<MarkupAttribute>& Default(const QString& element) const;
    bool HasStyle(const QString& name) const { return m_styles.contains(name); }

    // Colours by name, for "$name" in the values of attributes. False when the value is no colour: whatever is put in for a
    // name is short.
    bool AddColor(const QString& name, const QString& value);
    // An unknown name stays as it stands.
    QString WithColors(const QString& value) const;

    // A null picture when it is missing or damaged; that is remembered too.
    const QPixmap& Picture(const QString& file) const;
    // Draws a part of a picture, told in its own pixels. Where the screen has more pixels than that, the one of twice the size
    // stands in, when there is one: "name@2x.png".
    void DrawPicture(QPainter& painter,
                     const QRect& target,
                     const QString& file,
                     const QRect& source) const;
    // Draws what the text names; nothing for an empty one.
    void DrawImage(QPainter& painter, const QRect& area, const QString& imageText) const;

private:
    using AttributeMap = std::map<QString, std::vector<MarkupAttribute>>;

    std::shared_ptr<SkinPackage> m_package;
    std::vector<QFont> m_fonts;
    QFont m_defaultFont;
    AttributeMap m_styles;
    AttributeMap m_defaults;
    std::map<QString, QString> m_colors;
    mutable QHash<QString, QPixmap> m_pictures;
    mutable std::int64_t m_pictureBytes = 0;
    mutable QHash<QString, ImageText> m_imageTexts;
};

struct TextStyle
{
    int font = -1;
    QColor color = Qt::black;
    TextArea area;
};

// Draws runs and tells where they went.
TextLayout DrawRuns(QPainter& painter,
                    const Skin& skin,
                    const std::vector<TextRun>& runs,
                    const TextStyle& style);
// The same without drawing.
TextLayout MeasureRuns(const Skin& skin, const std::vector<TextRun>& runs, const TextStyle& style);
// The number of the clickable span at a place, or -1.
int LinkAt(const std::vector<TextRun>& runs, const TextLayout& layout, const QPoint& place);
// Shows that what lies in the area has the keyboard: two lines, dark and light, to be seen on any ground.
void DrawFocusMark(QPainter& painter, const QRect& area);
