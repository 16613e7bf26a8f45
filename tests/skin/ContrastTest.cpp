// Texts can be read: each has a contrast of 4.5 to 1 on what is painted below it.
#include "tests/skin/SkinFiles.h"
#include "ui/controls/RichEditUI.h"

#include <QImage>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <map>

namespace {

constexpr double Readable = 4.5;
// The title of a page has letters of 26 pixels in bold, and colours that the program sets.
constexpr double ReadableWhenLarge = 3.0;

double Luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double Contrast(const QColor& a, const QColor& b)
{
    const double first = Luminance(a) + 0.05;
    const double second = Luminance(b) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

struct PlacedText
{
    std::string description;
    QColor color;
    QRect area;  // in the window
    double wanted = Readable;
};

std::vector<PlacedText> TextsIn(const SceneWindow& window)
{
    std::vector<PlacedText> texts;
    for (const VisualControl* control : VisibleControls(window)) {
        const QPoint place = control->Widget()->mapTo(&window, QPoint(0, 0));
        for (const PlacedRun& run : control->PlacedText().placed) {
            if (!run.text.trimmed().isEmpty()) {
                texts.push_back({Describe(*control), control->TextColor(),
                                 run.rect.translated(place),
                                 control->GetName() == "Txt1" ? ReadableWhenLarge : Readable});
            }
        }
    }
    return texts;
}

// What is painted below the texts.
QImage GroundOf(SceneWindow& window)
{
    for (VisualControl* control : VisibleControls(window)) {
        // Its width must stay, and what lies there without a text is not asked for.
        const QSize size = control->Widget()->size();
        control->ChangePlace().width = size.width();
        control->SetText(QString());
    }
    // On a sharp screen the picture has more pixels than the places of the texts are told in.
    QImage ground = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
    ground.setDevicePixelRatio(1);
    return ground.scaled(window.size());
}

double WorstContrast(const QImage& ground, const PlacedText& text)
{
    double worst = 21;
    const QRect area = text.area.intersected(ground.rect());
    for (int y = area.top(); y <= area.bottom(); y += 2) {
        for (int x = area.left(); x <= area.right(); x += 2) {
            worst = std::min(worst, Contrast(text.color, ground.pixelColor(x, y)));
        }
    }
    return worst;
}

std::map<QString, QColor> ColorsOfTheLook()
{
    std::map<QString, QColor> colors;
    const QRegularExpression line("<Color name=\"(\\w+)\" value=\"(#\\w+)\"");
    auto found = line.globalMatch(MarkupOf("Look"));
    while (found.hasNext()) {
        const auto match = found.next();
        colors[match.captured(1)] = QColor(match.captured(2));
    }
    return colors;
}

}  // namespace

TEST_F(SkinTest, TextsOfAllWindowsCanBeReadOnTheirGround)
{
    const SceneTexts english = TextsOf("English");
    int count = 0;
    for (const Scene& scene : AllScenes()) {
        const auto window = MakeScene(scene, english);
        ASSERT_NE(window, nullptr);
        window->show();
        const std::vector<PlacedText> texts = TextsIn(*window);
        const QImage ground = GroundOf(*window);
        for (const PlacedText& text : texts) {
            EXPECT_GE(WorstContrast(ground, text), text.wanted)
                << scene.name.toStdString() << ": " << text.description;
            ++count;
        }
    }
    EXPECT_GT(count, 300);
}

TEST_F(SkinTest, ColoursThatMeetInRowsAndUnderTheMouseCanBeRead)
{
    const std::map<QString, QColor> colors = ColorsOfTheLook();
    const std::pair<const char*, const char*> pairs[] = {
        {"ink", "panel"},         {"ink", "hover"},           {"ink", "chosen"},
        {"ink", "greenTint"},     {"soft", "panel"},          {"soft", "hover"},
        {"soft", "greenTint"},    {"soft", "listHead"},       {"off", "panel"},
        {"off", "offGround"},     {"green", "greenTint"},     {"onAccent", "blueHot"},
        {"onAccent", "greenHot"}, {"onAccent", "blueDeep"},   {"headerText", "headerHot"},
        {"headerText", "header"}, {"headerText", "closeHot"}, {"headerSoft", "header"},
        {"red", "panel"},
    };
    for (const auto& [text, ground] : pairs) {
        ASSERT_TRUE(colors.contains(text) && colors.contains(ground)) << text << " " << ground;
        EXPECT_GE(Contrast(colors.at(text), colors.at(ground)), Readable) << text << " " << ground;
    }
}
