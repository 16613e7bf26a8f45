// Every window of the program in every language: each text has the room that it needs, and no control lies on another.
#include "tests/skin/SkinFiles.h"
#include "ui/list/ItemViewUI.h"
#include "ui/list/ListHeaderUI.h"

namespace {

class RoomForTexts : public SkinTest, public testing::WithParamInterface<std::string>
{};

// Texts that may be cut, since what they show has no end: they are shown whole by a tooltip.
bool MayBeCut(const Scene& scene, const CControlUI& control)
{
    // The path of a file, and a name after a text.
    return (scene.section == "RecoverProcessWnd" &&
            (control.GetName() == "current" || control.GetName() == "summary")) ||
           control.GetName() == "FileName";
}

// Of the rows at the top, with dates and sizes as long as they get.
std::string CutCells(const CItemViewUI& view)
{
    std::string cut;
    const QAbstractItemModel& model = *view.model();
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            const QModelIndex index = model.index(row, column);
            cut += view.CutTextOf(view.visualRect(index), index).toStdString();
        }
    }
    return cut;
}

std::string CutColumns(const CListHeaderUI& header)
{
    std::string cut;
    for (int i = 0; i < header.GetCount(); ++i) {
        const QRect area(0, 0, header.sectionSize(i), header.height());
        if (header.GetItemAt(i)->IsTextCut(area)) {
            cut += Describe(*header.GetItemAt(i)) + "\n";
        }
    }
    return cut;
}

std::string CutTexts(const Scene& scene, const SceneWindow& window)
{
    std::string cut;
    for (const VisualControl* control : VisibleControls(window)) {
        if (const auto* header = dynamic_cast<const CListHeaderUI*>(control)) {
            cut += CutColumns(*header);
        } else if (const auto* view = dynamic_cast<const CItemViewUI*>(control)) {
            cut += CutCells(*view);
        } else if (!control->GetText().isEmpty() && control->PlacedText().isCut &&
                   !MayBeCut(scene, *control)) {
            cut += Describe(*control) + "\n";
        }
    }
    return cut;
}

// Controls that lie on a neighbour, or beyond what they lie in.
std::string Collisions(const SceneWindow& window)
{
    std::string found;
    const std::vector<VisualControl*> controls = VisibleControls(window);
    for (const VisualControl* control : controls) {
        const QWidget* widget = control->Widget();
        const auto* parent = dynamic_cast<const CContainerUI*>(widget->parentWidget());
        if (parent == nullptr) {
            continue;
        }
        if (!parent->rect().contains(widget->geometry())) {
            found += Describe(*control) + " leaves its parent\n";
        }
        for (const VisualControl* other : controls) {
            if (other != control && other->Widget()->parentWidget() == parent &&
                other->Widget()->geometry().intersects(widget->geometry())) {
                found += Describe(*control) + " lies on " + Describe(*other) + "\n";
            }
        }
    }
    return found;
}

TEST_P(RoomForTexts, EveryTextIsShownWholeAndApartFromOthers)
{
    const SceneTexts texts = TextsOf(GetParam());
    int count = 0;
    for (const Scene& scene : AllScenes()) {
        SCOPED_TRACE(scene.name.toStdString());
        const auto window = MakeScene(scene, texts);
        ASSERT_NE(window, nullptr);
        window->show();
        EXPECT_EQ(window->size(), scene.size);
        EXPECT_EQ(CutTexts(scene, *window), "");
        EXPECT_EQ(Collisions(*window), "");
        count += static_cast<int>(VisibleControls(*window).size());
    }
    EXPECT_GT(count, 500);
}

INSTANTIATE_TEST_SUITE_P(All,
                         RoomForTexts,
                         testing::ValuesIn(LanguageStems()),
                         [](const auto& shown) { return shown.param; });

}  // namespace
