#include "tests/ui/TestWindow.h"
#include "ui/controls/EditUI.h"
#include "ui/controls/LabelUI.h"
#include "ui/controls/RichEditUI.h"
#include "ui/custom/ButtonExUI.h"

#include <QTest>
#include <QTextDocument>

using Strings = std::vector<std::string>;

TEST_F(UiTest, OfAGroupOnlyTheChosenOneTells)
{
    auto& scan = m_window.Get<COptionUI>("TabScan");
    auto& types = m_window.Get<COptionUI>("TabFileType");
    EXPECT_TRUE(scan.IsSelected());
    types.Selected(true);
    EXPECT_FALSE(scan.IsSelected());
    types.Selected(true);
    EXPECT_EQ(m_window.Take(), Strings{"selectchanged TabFileType"});
    // A click does not take it back, another chooses.
    QTest::mouseClick(&types, Qt::LeftButton);
    EXPECT_TRUE(types.IsSelected());
    QTest::mouseClick(&scan, Qt::LeftButton);
    EXPECT_EQ(m_window.Take(), Strings{"selectchanged TabScan"});
    QTest::keyClick(&scan, Qt::Key_Right);
    EXPECT_TRUE(types.IsSelected());
    EXPECT_EQ(m_window.Take(), Strings{"selectchanged TabFileType"});
    QTest::keyClick(&types, Qt::Key_Right);
    EXPECT_TRUE(scan.IsSelected());
    auto& photo = m_window.Get<COptionUI>("OptPhoto");
    QTest::keyClick(&photo, Qt::Key_Space);
    EXPECT_FALSE(photo.IsSelected());
    EXPECT_EQ(photo.GetUserData(), "jpg|jpeg");
    EXPECT_EQ(m_window.Take(), (Strings{"selectchanged TabScan", "selectchanged OptPhoto"}));
}

TEST_F(UiTest, PagesShowOneAtATime)
{
    auto& pages = m_window.Get<CTabLayoutUI>("TabPage");
    auto& first = m_window.Get<CLabelUI>("Page0");
    EXPECT_EQ(pages.GetCurSel(), 1);
    EXPECT_FALSE(first.isVisible());
    EXPECT_TRUE(pages.SelectItem(0));
    EXPECT_TRUE(first.isVisible());
    EXPECT_FALSE(m_window.Get<CButtonUI>("BtnScan").isVisible());
    // Its own state is another thing than what shows.
    EXPECT_TRUE(m_window.Get<CButtonUI>("BtnScan").IsVisible());
    EXPECT_FALSE(pages.SelectItem(2));
    EXPECT_FALSE(pages.SelectItem(-1));
    EXPECT_EQ(pages.GetCurSel(), 0);
    first.SetVisible(false);
    pages.SelectItem(1);
    pages.SelectItem(0);
    EXPECT_FALSE(first.isVisible());
}

TEST_F(UiTest, ButtonsClickByMouseAndKey)
{
    auto& button = m_window.Get<CButtonUI>("BtnScan");
    QTest::mouseClick(&button, Qt::LeftButton);
    QTest::keyClick(&button, Qt::Key_Space);
    auto& off = m_window.Get<CButtonUI>("BtnOff");
    QTest::mouseClick(&off, Qt::LeftButton);
    EXPECT_EQ(m_window.Take(), (Strings{"click BtnScan", "click BtnScan"}));
    off.SetEnabled(true);
    // A handler of its own keeps it from the window.
    off.AddHandler([](const Notification& told) { return told.type == NotifyClick; });
    QTest::mouseClick(&off, Qt::LeftButton);
    EXPECT_TRUE(m_window.Take().empty());
}

TEST_F(UiTest, HotButtonsTellForMouseAndFocus)
{
    auto& button = m_window.Get<CButtonExUI>("BtnRecoverMode");
    QEnterEvent enter({5, 5}, {5, 5}, {5, 5});
    QEvent leave(QEvent::Leave);
    QCoreApplication::sendEvent(&button, &enter);
    QCoreApplication::sendEvent(&button, &leave);
    EXPECT_EQ(m_window.Take(), (Strings{"onhot BtnRecoverMode", "offhot BtnRecoverMode"}));
    button.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(m_window.Take(), Strings{"onhot BtnRecoverMode"});
    button.clearFocus();
    m_window.Take();
    button.SetEnabled(false);
    QCoreApplication::sendEvent(&button, &enter);
    EXPECT_TRUE(m_window.Take().empty());
}

TEST_F(UiTest, ASpanOfATextIsClicked)
{
    auto& title = m_window.Get<CLabelUI>("MainTitle");
    EXPECT_EQ(title.accessibleName(), "Every element of the skin");
    title.SetText("{x 4}<a>here</a> or there");
    QTest::mouseClick(&title, Qt::LeftButton, {}, {10, title.height() / 2});
    QTest::mouseClick(&title, Qt::LeftButton, {}, {title.width() - 4, title.height() / 2});
    EXPECT_EQ(m_window.Take(), Strings{"click MainTitle"});
    title.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&title, Qt::Key_Return);
    EXPECT_EQ(m_window.Take(), Strings{"click MainTitle"});
    title.SetText("nothing to click");
    EXPECT_EQ(title.focusPolicy(), Qt::NoFocus);
}

TEST_F(UiTest, TimersFireAgainUntilTheyAreKilled)
{
    auto& bar = m_window.Get<CContainerUI>("ToolBar1");
    bar.SetTimer(1, 5);
    ASSERT_TRUE(QTest::qWaitFor([this] { return m_window.told.size() >= 2; }));
    EXPECT_EQ(m_window.told[0], "timer ToolBar1");
    // Begun anew before it fires.
    bar.SetTimer(1, 100000);
    m_window.Take();
    QTest::qWait(30);
    EXPECT_TRUE(m_window.told.empty());
    bar.KillTimer(1);
    EXPECT_FALSE(bar.HasTimer(1));
    // A timer may take its own control away.
    auto& title = m_window.Get<CLabelUI>("MainTitle");
    title.AddHandler([&bar](const Notification&) {
        bar.RemoveAt(0);
        return true;
    });
    title.SetTimer(2, 1);
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_window.FindControl("MainTitle") == nullptr; }));
}

TEST_F(UiTest, ThePaneShowsTextOrAPictureOrSaysThatItCannot)
{
    auto& pane = m_window.Get<CRichEditUI>("PreviewEdit");
    const TempFolder folder;
    WriteFileBytes(folder / "tmp.jpg", MakePng(2000, 1000));
    const QString path = QString::fromStdString((folder / "tmp.jpg").string());
    EXPECT_TRUE(pane.InsertPictureFile(path));
    EXPECT_TRUE(pane.HasPicture());
    EXPECT_LE(pane.document()->idealWidth(), pane.width());
    pane.ShowText("<b>a folder</b>", 60);
    EXPECT_FALSE(pane.HasPicture());
    EXPECT_EQ(pane.GetText(), "<b>a folder</b>");
    WriteFileBytes(folder / "tmp.jpg", ByteVector(100, 7));
    EXPECT_FALSE(pane.InsertPictureFile(path));
    EXPECT_EQ(pane.GetText(), "");
    EXPECT_FALSE(pane.InsertPictureFile(path + "x"));
    EXPECT_TRUE(pane.isReadOnly());
}

TEST_F(UiTest, FieldsKeepWhatWasTyped)
{
    auto& field = m_window.Get<CEditUI>("Field");
    EXPECT_EQ(field.GetText(), "field");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, "{f 5}");
    EXPECT_EQ(field.GetText(), "{f 5}");
    auto& bar = m_window.Get<CProgressUI>("progress");
    bar.SetValue(1000);
    EXPECT_EQ(bar.GetValue(), 100);
}
