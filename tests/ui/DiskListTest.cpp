#include "tests/ui/TestWindow.h"
#include "ui/custom/DiskListUI.h"

#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

namespace {

std::unique_ptr<CListImageTextNodeUI> MakeRow(const QString& text)
{
    auto row = std::make_unique<CListImageTextNodeUI>();
    row->SetText(text);
    row->ApplyAttributeList("height=\"30\"");
    return row;
}

template <typename List>
std::string Shown(const List& list)
{
    std::string shown;
    for (int i = 0; i < list.GetCount(); ++i) {
        const auto* row = list.GetItemAt(i);
        EXPECT_EQ(list.isRowHidden(i, {}), !row->IsVisible());
        const QString plain = PlainText(row->GetText(), true);
        shown += (row->IsVisible() ? plain : "(" + plain + ")").toStdString() + " ";
    }
    return shown;
}

class DiskListTest : public UiTest
{
protected:
    DiskListTest() : list(m_window.Get<CDiskListUI>("DiskList"))
    {
        disk = list.AddNode(MakeRow("{f 5}{x 5}{i d.png 1 0}Disk 1{/5}"), nullptr);
        other = list.AddNode(MakeRow("Disk 2"), nullptr);
        volume = list.AddNode(MakeRow("{f 5}" + PlainRun("{i x.png 1 0}") + "{/f}"), disk);
        list.AddNode(MakeRow("D"), disk);
        list.AddNode(MakeRow("deep"), volume);
        list.AddNode(MakeRow("E"), other);
        QCoreApplication::processEvents();
    }

    CDiskListUI& list;
    CListExUI::Node* disk = nullptr;
    CListExUI::Node* other = nullptr;
    CListExUI::Node* volume = nullptr;
};

class ListExTest : public UiTest
{
protected:
    ListExTest() : list(std::make_shared<Skin>(*m_window.GetSkin()))
    {
        list.resize(200, 100);
        list.show();
    }

    CListExUI list;
};

}  // namespace

TEST_F(DiskListTest, RowsStandBehindWhatIsBelowTheirParent)
{
    EXPECT_EQ(Shown(list), "Disk 1 {i x.png 1 0} (deep) D Disk 2 E ");
    EXPECT_EQ(disk->Level, 0);
    EXPECT_EQ(volume->Level, 1);
    EXPECT_TRUE(disk->ChildVisible);
    EXPECT_FALSE(volume->ChildVisible);
}

TEST_F(DiskListTest, HidingReachesAllBelowAndShowingOnlyWhatIsOpen)
{
    list.SetChildVisible(disk, false);
    EXPECT_EQ(Shown(list), "Disk 1 ({i x.png 1 0}) (deep) (D) Disk 2 E ");
    // Added below one that is closed.
    list.AddNode(MakeRow("new"), disk);
    // A change below something hidden shows nothing.
    list.SetChildVisible(volume, true);
    EXPECT_EQ(Shown(list), "Disk 1 ({i x.png 1 0}) (deep) (D) (new) Disk 2 E ");
    list.SetChildVisible(disk, true);
    EXPECT_EQ(Shown(list), "Disk 1 {i x.png 1 0} deep D new Disk 2 E ");
}

TEST_F(DiskListTest, RemovingTakesAllBelow)
{
    list.SelectItem(1);
    EXPECT_TRUE(list.Remove(disk->Row));
    EXPECT_EQ(Shown(list), "Disk 2 E ");
    EXPECT_EQ(list.GetCurSel(), -1);
    EXPECT_EQ(list.GetRootNode()->Children.size(), 1U);
    EXPECT_FALSE(list.RemoveAt(7));
    list.RemoveAll();
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_TRUE(list.GetRootNode()->Children.empty());
    EXPECT_NE(list.AddNode(MakeRow("again"), nullptr), nullptr);
}

TEST_F(DiskListTest, KeysCloseAndOpen)
{
    list.SelectItem(0);
    QTest::keyClick(&list, Qt::Key_Left);
    EXPECT_FALSE(disk->ChildVisible);
    QTest::keyClick(&list, Qt::Key_Right);
    EXPECT_TRUE(disk->ChildVisible);
    list.SelectItem(3);
    QTest::keyClick(&list, Qt::Key_Left);
    EXPECT_EQ(list.GetCurSel(), 0);
    EXPECT_EQ(list.GetItemAt(0)->GetHeight(), 30);
    EXPECT_EQ(list.visualRect(list.model()->index(0, 0)).height(), 30);
}

TEST_F(DiskListTest, AFlagOfTheOtherKindIsNotWrittenIntoTheTexts)
{
    list.SetChildVisible(disk, false);
    EXPECT_EQ(disk->Row->GetText(), "{f 5}{x 5}{i d.png 1 0}Disk 1{/5}");
}

TEST_F(ListExTest, TextsGetIndentAndFlag)
{
    CListExUI::Node* node = nullptr;
    QStringList texts;
    for (int level = 0; level < 4; ++level) {
        node = list.AddNode("t", node, 70 + level);
        texts.append(node->Row->GetText());
    }
    EXPECT_EQ(texts[0], "<x 6><a><i expand_flag.png 2 1></a>t");
    EXPECT_EQ(texts[1], "<x 6><x 18><a><i expand_flag.png 2 0></a>t");
    EXPECT_EQ(texts[3], "<x 6><x 18><x 18><x 18>t");
    EXPECT_EQ(node->Row->GetTag(), 73);
    EXPECT_EQ(node->Text, "t");
    CListExUI::Node* top = list.GetRootNode()->Children[0];
    list.SetChildVisible(top, false);
    EXPECT_EQ(top->Row->GetText(), "<x 6><a><i expand_flag.png 2 0></a>t");
    // The flag is clicked.
    const QRect cell = list.visualRect(list.model()->index(0, 0));
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, {cell.left() + 14, cell.center().y()});
    EXPECT_TRUE(top->ChildVisible);
    list.RemoveNode(top->Children[0], false);
    EXPECT_EQ(list.GetCount(), 4);
    EXPECT_TRUE(top->Children.empty());
}

TEST_F(ListExTest, TheWheelGlidesAndStopsAtTheEnd)
{
    for (int i = 0; i < 200; ++i) {
        list.AddNode(QString::number(i), nullptr);
    }
    QCoreApplication::processEvents();
    const auto turn = [this](int delta) {
        QWheelEvent event({5, 5}, list.mapToGlobal(QPointF(5, 5)), {}, {0, delta}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(list.viewport(), &event);
    };
    turn(-120);
    EXPECT_EQ(list.verticalScrollBar()->value(), 0);
    EXPECT_TRUE(list.HasTimer(WheelGlide::TimerId));
    EXPECT_EQ(list.Glide().TicksLeft(), 12);
    // Driven by hand: what is scrolled in all does not depend on the clock.
    list.KillTimer(WheelGlide::TimerId);
    while (list.Glide().IsRunning()) {
        list.OnTimer(WheelGlide::TimerId);
    }
    const int glided = list.verticalScrollBar()->value();
    EXPECT_NEAR(glided, 55, 2);
    turn(120);
    list.OnTimer(WheelGlide::TimerId);
    EXPECT_LT(list.verticalScrollBar()->value(), glided);
    list.verticalScrollBar()->setValue(3);
    list.OnTimer(WheelGlide::TimerId);
    EXPECT_EQ(list.verticalScrollBar()->value(), 0);
    EXPECT_FALSE(list.HasTimer(WheelGlide::TimerId));
    EXPECT_FALSE(list.Glide().IsRunning());
}
