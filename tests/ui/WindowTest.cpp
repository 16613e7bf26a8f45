#include "tests/ui/TestWindow.h"
#include "texts/LanguageSection.h"
#include "ui/controls/ButtonUI.h"
#include "ui/controls/EditUI.h"
#include "ui/controls/LabelUI.h"
#include "ui/list/TreeNodeUI.h"

#include <QApplication>
#include <QTest>

#include <set>
#include <thread>

using Strings = std::vector<std::string>;

TEST(Window, IsInitialisedBeforeItTellsSo)
{
    const TestSkin skin;
    WindowImplBase::UsePackage(
        SkinPackage::FromFolder(QString::fromStdString(skin.Folder().string())));
    TestWindow window;
    ASSERT_TRUE(window.Create(nullptr, 500, 400));
    EXPECT_EQ(window.Take(), (Strings{"init", "windowinit "}));
    EXPECT_EQ(window.size(), QSize(500, 400));
    EXPECT_FALSE(window.isVisible());
    TestWindow missing("xml/none.xml");
    EXPECT_FALSE(missing.Create(nullptr));
    EXPECT_EQ(missing.FindControl("BtnScan"), nullptr);
    EXPECT_TRUE(missing.Take().empty());
    WindowImplBase::UsePackage(nullptr);
}

TEST_F(UiTest, TheFocusHasItsKeysFirst)
{
    auto& field = m_window.Get<CEditUI>("Field");
    field.setFocus();
    QTest::keyClicks(&field, "a");
    EXPECT_TRUE(m_window.keys.empty());
    QTest::keyClick(&field, Qt::Key_Escape);
    QTest::keyClick(&m_window.Get<CButtonUI>("BtnScan"), Qt::Key_Return);
    EXPECT_EQ(m_window.keys, (std::vector<int>{Qt::Key_Escape, Qt::Key_Return}));
    EXPECT_TRUE(m_window.isVisible());
}

TEST_F(UiTest, TabReachesAllThatCanBeWorkedWith)
{
    std::set<QWidget*> reached;
    m_window.Root().setFocus();
    for (int i = 0; i < 40; ++i) {
        QTest::keyClick(QApplication::focusWidget() != nullptr ? QApplication::focusWidget()
                                                               : &m_window,
                        Qt::Key_Tab);
        reached.insert(QApplication::focusWidget());
    }
    for (const char* name :
         {"MainTitle", "TypeTree", "FileList", "DiskList", "PreviewEdit", "TabScan", "TabFileType",
          "OptPhoto", "Field", "BtnScan", "BtnRecoverMode"}) {
        EXPECT_TRUE(reached.contains(m_window.FindControl(name)->Widget())) << name;
    }
    EXPECT_FALSE(reached.contains(m_window.FindControl("BtnOff")->Widget()));
}

TEST_F(UiTest, MessagesComeFromAnyThreadInOrder)
{
    std::thread([this] {
        m_window.PostWindowMessage(0x401, 7, -1);
        m_window.PostWindowMessage(0x402);
    }).join();
    EXPECT_TRUE(m_window.told.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(m_window.Take(), (Strings{"message 1025 7 -1", "message 1026 0 0"}));
}

TEST_F(UiTest, ClosingCanBeRefusedAndIsTheLastThing)
{
    m_window.mayClose = false;
    m_window.close();
    EXPECT_TRUE(m_window.isVisible());
    m_window.mayClose = true;
    m_window.close();
    EXPECT_FALSE(m_window.isVisible());
    EXPECT_TRUE(m_window.told.empty());
    QCoreApplication::processEvents();
    EXPECT_EQ(m_window.Take(), Strings{"final"});
}

TEST_F(UiTest, TextsOfALanguageReachControlsByName)
{
    LanguageSection section;
    section.Set("BtnOff", "Aus");
    section.Set("NodePhoto", "Fotos");
    section.Set("nobody", "x");
    m_window.ApplyLanguage(section);
    EXPECT_EQ(m_window.Get<CButtonUI>("BtnOff").GetText(), "Aus");
    EXPECT_FALSE(m_window.Get<CButtonUI>("BtnOff").IsEnabled());
    EXPECT_EQ(m_window.Get<CTreeNodeUI>("NodePhoto").GetText(), "Fotos");
}

TEST_F(UiTest, ControlsAreWrittenAndReadByAttributes)
{
    auto& label = m_window.Get<CLabelUI>("Long");
    EXPECT_TRUE(label.SetAttribute("textcolor", "#FF0089BE"));
    EXPECT_EQ(label.Look().textColor, QColor(0, 0x89, 0xBE));
    EXPECT_EQ(label.GetAttribute("textcolor"), "#FF0089BE");
    label.SetTag(-5);
    EXPECT_EQ(label.GetTag(), -5);
    EXPECT_FALSE(label.SetAttribute("nothing", "1"));
    EXPECT_EQ(label.GetAttribute("nothing"), "");
    auto& bar = m_window.Get<CContainerUI>("ToolBar1");
    ASSERT_EQ(bar.GetCount(), 2);
    EXPECT_EQ(bar.GetItemAt(1), &label);
    EXPECT_EQ(label.GetParent(), &bar);
    EXPECT_EQ(bar.GetItemAt(2), nullptr);
    m_window.SendNotify(label, NotifyItemSelect);
    EXPECT_EQ(m_window.Take(), Strings{"itemselect Long"});
}
