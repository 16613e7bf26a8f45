#include "tests/ui/TestWindow.h"
#include "texts/LanguageManager.h"
#include "ui/controls/ButtonUI.h"
#include "ui/custom/MenuWindow.h"

#include <QApplication>
#include <QPointer>
#include <QScreen>
#include <QTest>

namespace {

class MenuTest : public UiTest
{
protected:
    MenuTest()
    {
        std::filesystem::create_directory(m_data / "Languages");
        Write("config.ini", "[DefaultLanguage]\nDefault=English\n[Languages]\nEnglish="
                            "English\nitem_exit=Fran&c<a>ais\n");
        Write("Languages/English.ini", "[MenuWnd]\nitem_help=Help & more\n");
        Write("Languages/item_exit.ini", "[MenuWnd]\nitem_help=Aide\n");
        m_languages =
            std::make_unique<LanguageManager>(LanguagePaths{m_data.Path(), m_data / "user.ini"});
        Open();
    }
    MenuTest(const MenuTest&) = delete;
    MenuTest& operator=(const MenuTest&) = delete;
    ~MenuTest() override { delete m_menu.data(); }

    void Write(const std::string& name, const std::string& text) const
    {
        WriteFileBytes(m_data / name, ByteVector(text.begin(), text.end()));
    }
    void Open(int x = 10, int y = 10)
    {
        delete m_menu.data();
        m_menu = new CMenuWindow(
            {m_languages.get(), [this] { m_told.emplace_back("language"); },
             [this](const QString& item) { m_told.push_back(item.toStdString()); }});
        ASSERT_TRUE(m_menu->Init(nullptr, x, y, m_window.Get<CButtonUI>("BtnScan")));
        EXPECT_TRUE(m_menu->MarkupProblems().isEmpty());
    }
    CMenuElementUI& Item(const char* name) const
    {
        return dynamic_cast<CMenuElementUI&>(*m_menu->GetMenu()->FindControl(name));
    }
    // The menu closes by itself and is gone soon after.
    bool IsGone()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return m_menu.isNull();
    }

    TempFolder m_data;
    std::unique_ptr<LanguageManager> m_languages;
    QPointer<CMenuWindow> m_menu;
    std::vector<std::string> m_told;
};

}  // namespace

TEST_F(MenuTest, ShowsTheTextsAndTheLanguages)
{
    EXPECT_EQ(Item("item_help").GetText(), "Help & more");
    EXPECT_EQ(Item("item_help").Action()->text(), "Help && more");
    CMenuElementUI& languages = Item("item_language");
    ASSERT_EQ(languages.GetCount(), 2);
    EXPECT_EQ(languages.GetItemAt(1)->GetText(), "Fran&c<a>ais");
    EXPECT_NE(languages.GetItemAt(0)->GetAttribute("bkimage"), "");
    EXPECT_EQ(languages.GetItemAt(1)->GetAttribute("bkimage"), "");
    EXPECT_EQ(m_menu->GetMenu()->actionGeometry(Item("item_help").Action()).size(), QSize(180, 26));
    EXPECT_FALSE(m_menu->GetMenu()->grab().isNull());
}

TEST_F(MenuTest, AnItemTellsItsNameAndTheMenuGoes)
{
    CMenuUI* menu = m_menu->GetMenu();
    QTest::mouseClick(menu, Qt::LeftButton, {},
                      menu->actionGeometry(Item("item_about").Action()).center());
    EXPECT_EQ(m_told, std::vector<std::string>{"item_about"});
    EXPECT_TRUE(IsGone());
}

TEST_F(MenuTest, ALanguageIsChosenByKeysEvenWithTheNameOfAnItem)
{
    CMenuUI* menu = m_menu->GetMenu();
    QTest::keyClick(menu, Qt::Key_Down);
    QTest::keyClick(menu, Qt::Key_Right);
    CMenuUI* submenu = Item("item_language").GetSubmenu();
    ASSERT_TRUE(submenu->isVisible());
    QTest::keyClick(submenu, Qt::Key_Down);
    QTest::keyClick(submenu, Qt::Key_Return);
    EXPECT_EQ(m_told, std::vector<std::string>{"language"});
    EXPECT_EQ(m_languages->GetCurrentLanguage(), "item_exit");
    EXPECT_TRUE(IsGone());
    Open();
    EXPECT_EQ(Item("item_help").GetText(), "Aide");
}

TEST_F(MenuTest, EscapeClosesItAndItStaysOnTheScreen)
{
    QTest::keyClick(m_menu->GetMenu(), Qt::Key_Escape);
    EXPECT_TRUE(IsGone());
    EXPECT_TRUE(m_told.empty());
    const QRect screen = QApplication::primaryScreen()->availableGeometry();
    Open(screen.right() - 5, screen.bottom() - 5);
    EXPECT_TRUE(screen.contains(m_menu->GetMenu()->geometry()));
}

TEST_F(MenuTest, ExitEndsTheProgram)
{
    bool isQuit = false;
    const auto connection =
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, [&isQuit] { isQuit = true; });
    CMenuUI* menu = m_menu->GetMenu();
    QTest::keyClick(menu, Qt::Key_Up);
    QTest::keyClick(menu, Qt::Key_Return);
    QApplication::exec();
    QObject::disconnect(connection);
    EXPECT_TRUE(isQuit);
    EXPECT_TRUE(m_told.empty());
}
