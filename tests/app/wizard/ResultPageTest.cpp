// Page 3 and page 2, by what the user does there.
#include "app/popups/Messages.h"
#include "tests/app/wizard/WizardFixture.h"
#include "texts/LanguageManager.h"
#include "ui/controls/ButtonUI.h"
#include "ui/controls/EditUI.h"
#include "ui/controls/RichEditUI.h"

#include <QTest>

namespace {

// Of a node's box: "-", "x" or "o" for partly.
std::string Box(const CTreeNodeUI& node)
{
    const CTreeNodeButtonUI& box = node.GetCheckBox();
    if (box.IsPartial()) {
        return box.IsSelected() ? "o" : "?";
    }
    return box.IsSelected() ? "x" : "-";
}

class ResultPageTest : public WizardTest
{
protected:
    ResultPageTest()
    {
        Open();
        Find({{"b.JPEG", 3000},
              {"a.jpg", 1000},
              {"c.jpg", 2000},
              {"<a>.png", 10},
              {"e.mp3", 0},
              {"<a>", 5},
              {"f.xyz", 5}});
    }

    // Head, box of the type, box of its category.
    std::string Marks(const CTreeNodeUI& node) const
    {
        return Get("CheckAll").GetUserData().toStdString() + Box(node) + Box(*node.GetParentNode());
    }
    void Show(CTreeNodeUI& node) const { Get<CTreeViewUI>("TypeTree").SelectNode(&node); }
    CTreeNodeUI& Jpg() const { return *Node("NodePhoto").GetItemAt(0); }
    CTreeNodeUI& Png() const { return *Node("NodePhoto").GetItemAt(1); }
};

TEST_F(ResultPageTest, ShowsTypesThatHaveAnOptionAndTheFilesOfTheFirst)
{
    EXPECT_EQ(Page(), 3);
    EXPECT_EQ(Text("NodePhoto"), "Photos (4)");
    EXPECT_EQ(Jpg().GetText().toStdString(), "JPG (3)");
    EXPECT_EQ(Jpg().GetUserData().toStdString(), "jpg|jpeg");
    EXPECT_EQ(Text("NodeAudio"), "Audio (1)");
    EXPECT_FALSE(IsVisible("NodeVideo"));
    EXPECT_TRUE(Node("NodePhoto").GetFolderButton().IsSelected());
    EXPECT_EQ(Column(1), "b.JPEG a.jpg c.jpg ");
    EXPECT_EQ(Column(5), "    ----         ----         ----     ");
    EXPECT_EQ(Files().GetItemAt(0)->GetColumnImage(1).toStdString(), "file='Icon/photo_jpg.png'");
    EXPECT_EQ(Files().GetCurSel(), 0);
    EXPECT_EQ(Text("Txt2"), "Files found: {f 7}{c #316D1E}7{/c}{/f}. Tick the files that you want "
                            "to get back, then click “Recover”.");
    EXPECT_EQ(Text("SelectedFileInfo"), "No files selected");
    EXPECT_FALSE(Get("BtnRecover").IsEnabled());
    Shoot("page3");
}

TEST_F(ResultPageTest, ATickInARowGoesUpTheTreeAndOutlivesAnotherType)
{
    EXPECT_EQ(Marks(Jpg()), "unchecked--");
    Tick(1);
    EXPECT_EQ(Marks(Jpg()), "uncheckedoo");
    EXPECT_EQ(Text("SelectedFileInfo"), "Selected: 1000 Bytes, files: 1");
    EXPECT_TRUE(Get("BtnRecover").IsEnabled());
    Tick(0);
    Tick(2);
    EXPECT_EQ(Marks(Jpg()), "checkedxo");
    Show(Png());
    EXPECT_EQ(Marks(Png()), "unchecked-o");
    EXPECT_EQ(Column(1), "<a>.png ");
    EXPECT_FALSE(Files().RowsLook().hasMarkup);
    Tick(0);
    EXPECT_EQ(Marks(Png()), "checkedxx");
    Show(Jpg());
    EXPECT_EQ(Marks(Jpg()), "checkedxx");
    EXPECT_TRUE(Files().GetItemAt(2)->IsChecked());
    Tick(2);
    EXPECT_EQ(Marks(Jpg()), "uncheckedoo");
    EXPECT_EQ(m_window->State().selection.size(), 3u);
    Tick(0);
    Tick(1);
    EXPECT_EQ(Marks(Jpg()), "unchecked-o");
    EXPECT_EQ(Text("SelectedFileInfo"), "Selected: 10 Bytes, files: 1");
}

TEST_F(ResultPageTest, ATickInTheTreeCountsWhatIsNotShown)
{
    Node("NodePhoto").GetCheckBox().Selected(true);
    EXPECT_EQ(Text("SelectedFileInfo"), "Selected: 5.87 KB, files: 4");
    EXPECT_EQ(Marks(Jpg()), "checkedxx");
    EXPECT_TRUE(Files().GetItemAt(0)->IsChecked());
    Png().GetCheckBox().Selected(false);
    EXPECT_EQ(Marks(Jpg()), "checkedxo");
    EXPECT_EQ(m_window->State().selection.size(), 3u);
    Node("NodePhoto").GetCheckBox().Selected(false);
    EXPECT_EQ(Marks(Jpg()), "unchecked--");
    EXPECT_FALSE(Files().GetItemAt(0)->IsChecked());
    EXPECT_TRUE(m_window->State().selection.empty());
}

TEST_F(ResultPageTest, TheHeadTicksAllRowsOfTheTypeAndSortsByTheOthers)
{
    const auto click = [this](const char* name) { Get(name).SendNotify(NotifyHeaderClick); };
    click("CheckAll");
    EXPECT_EQ(Marks(Jpg()), "checkedxo");
    EXPECT_EQ(m_window->State().selection.size(), 3u);
    EXPECT_EQ(Text("CheckAll"), "{i checked.png 1 0}");
    click("CheckAll");
    EXPECT_EQ(Marks(Jpg()), "unchecked--");
    Tick(1);
    click("CheckAll");
    EXPECT_EQ(Marks(Jpg()), "checkedxo") << "also when some were ticked";
    EXPECT_EQ(m_window->State().selection.size(), 3u);
    click("CheckAll");

    const std::vector<std::pair<const char*, const char*>> clicks = {
        {"FileName", "a.jpg b.JPEG c.jpg "},
        {"FileName", "c.jpg b.JPEG a.jpg "},
        {"Size", "b.JPEG c.jpg a.jpg "},
        {"Size", "a.jpg c.jpg b.JPEG "},
        {"Path", "c.jpg a.jpg b.JPEG "}};  // by "1.95 KB", "1000 Bytes", "2.93 KB"
    for (const auto& [header, order] : clicks) {
        click(header);
        EXPECT_EQ(Column(1), order) << header;
    }
    EXPECT_EQ(Get("Path").GetAttribute("bkimage"), "file='list_header_desc.png' corner='0,1,13,1'");
    EXPECT_EQ(Get("Size").GetAttribute("bkimage"), "file='list_header_bg.png' corner='0,1,0,1'");
    Tick(0);
    EXPECT_EQ(m_window->State().selection.begin()->second.Row().record.NameText(), "c.jpg")
        << "a row keeps its file when it is sorted";
}

TEST_F(ResultPageTest, FilterFieldKeepsTicks)
{
    auto& field = Get<CEditUI>("FilterEdit");
    const auto type = [this, &field](const char* text, int rows) {
        field.setText(QLatin1String(text));
        ASSERT_TRUE(WaitFor([this, rows] { return Files().GetCount() == rows; })) << text;
    };
    Tick(0);
    Files().SelectItem(2);
    Get("FileName").SendNotify(NotifyHeaderClick);
    type("JP", 3);
    type("JPG", 2);
    EXPECT_EQ(Column(1), "a.jpg c.jpg ");
    EXPECT_EQ(Text("FilterCount"), "2 of 3");
    EXPECT_EQ(Files().GetCurSel(), 1) << "the current file stays current";
    EXPECT_EQ(Text("SelectedFileInfo"), "Selected: 2.93 KB, files: 1")
        << "what is hidden is ticked";
    Tick(0);
    Tick(1);
    EXPECT_EQ(Marks(Jpg()), "checkedxo") << "all three are";
    Tick(1);
    EXPECT_EQ(Marks(Jpg()), "uncheckedoo");
    Get("CheckAll").SendNotify(NotifyHeaderClick);
    EXPECT_EQ(m_window->State().selection.size(), 3u) << "the head takes all files of the type";
    Get("CheckAll").SendNotify(NotifyHeaderClick);
    EXPECT_TRUE(m_window->State().selection.empty());
    Node("NodePhoto").GetCheckBox().Selected(true);
    EXPECT_EQ(m_window->State().selection.size(), 4u);
    type("c", 1);
    Get("FileName").SendNotify(NotifyHeaderClick);
    Show(Png());
    EXPECT_EQ(Files().GetCount(), 0) << "other types are filtered too";
    Show(Jpg());
    EXPECT_EQ(Column(1), "c.jpg ");
    Get("FileName").SendNotify(NotifyHeaderClick);
    Shoot("page3-filter");
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(Column(1), "a.jpg b.JPEG c.jpg ") << "in the order that was chosen meanwhile";
    EXPECT_TRUE(Files().GetItemAt(1)->IsChecked());
    EXPECT_EQ(Text("FilterCount"), "");
}

TEST_F(ResultPageTest, HiddenDoublesGiveTheirTickToTheFileThatIsShown)
{
    auto& option = Get<COptionUI>("OptHideDoubles");
    EXPECT_FALSE(option.IsEnabled()) << "there is none";
    std::vector<FoundRow>& results = m_window->State().results;
    results[1].doubleOf = results[0].at;  // a.jpg of b.JPEG
    results[3].doubleOf = results[2].at;  // <a>.png of c.jpg: the type has no other file
    m_window->HandleMessage(WM_SEARCH_DONE, 0, 0);
    EXPECT_EQ(option.GetText().toStdString(), "Hide doubles (2)");
    EXPECT_EQ(Column(1), "b.JPEG a.jpg c.jpg ") << "off at first";
    Get("FileName").SendNotify(NotifyHeaderClick);
    Tick(0);
    Files().SelectItem(2);

    option.Selected(true);
    EXPECT_EQ(Column(1), "b.JPEG c.jpg ");
    EXPECT_EQ(Files().GetCurSel(), 1);
    EXPECT_EQ(Text("NodePhoto"), "Photos (2)");
    EXPECT_EQ(Node("NodePhoto").GetCount(), 1) << "a type with doubles alone is gone";
    EXPECT_EQ(Marks(Jpg()), "uncheckedoo");
    EXPECT_EQ(Text("SelectedFileInfo"), "Selected: 2.93 KB, files: 1");
    EXPECT_TRUE(Files().GetItemAt(0)->IsChecked());
    Get("CheckAll").SendNotify(NotifyHeaderClick);
    EXPECT_EQ(Marks(Jpg()), "checkedxx");
    EXPECT_EQ(m_window->State().selection.size(), 2u) << "no double is ticked";
    Shoot("page3-doubles");

    option.Selected(false);
    EXPECT_EQ(Column(1), "a.jpg b.JPEG c.jpg ");
    EXPECT_EQ(Text("NodePhoto"), "Photos (4)");
    EXPECT_EQ(Marks(Jpg()), "uncheckedoo");
    EXPECT_EQ(m_window->State().selection.size(), 2u);
}

TEST_F(ResultPageTest, AnotherLanguageIsSeenAtOnce)
{
    Tick(0);
    ASSERT_EQ(LanguageManager::GetInstance().SetLanguage("German"), ResultSuccess);
    m_window->HandleMessage(WM_LANGUAGE_CHANGED, 0, 0);
    EXPECT_EQ(Text("NodePhoto"), "Fotos (4)");
    EXPECT_NE(Text("Txt2").find("7{/c}"), std::string::npos);
    EXPECT_EQ(Text("Txt1"), LanguageManager::GetInstance().GetSection("Messages").Get("MSG0801"));
    EXPECT_EQ(Text("TabScan"), "Laufwerk");
    EXPECT_EQ(Text("SelectedFileInfo").find("Selected"), std::string::npos);
    EXPECT_FALSE(Get("Label1").IsVisible() && Get("BtnScan").IsVisible());
    Shoot("page3-german");
}

TEST_F(ResultPageTest, AFolderHasNoPreview)
{
    Find({{"folder.jpg", 0}});
    m_window->State().results.back().record.IsFolder = 1;
    Files().SelectItem(3);
    ASSERT_TRUE(WaitFor([this] {
        return Text("PreviewEdit").find("Folders cannot be previewed.") != std::string::npos;
    }));
    EXPECT_EQ(Files().GetItemAt(3)->GetColumnText(6), "folder");
    EXPECT_EQ(Files().GetItemAt(3)->GetColumnText(2), "");
}

TEST_F(ResultPageTest, MenuItemsArriveAsMessages)
{
    for (const std::uint32_t number : {0x464U, 0x465U, 0x468U, 0x469U}) {
        EXPECT_TRUE(m_window->HandleMessage(number, 0, 0));
    }
    EXPECT_EQ(m_menuItems,
              (std::vector<std::string>{"item_help", "item_faq", "item_about", "item_support"}));
    EXPECT_FALSE(m_window->HandleMessage(0x466, 0, 0));
}

class TypePageTest : public WizardTest
{
protected:
    TypePageTest() { Open(); }
};

TEST_F(TypePageTest, WithoutAnyOptionNothingIsShownOfWhatIsFound)
{
    for (const char* block : {"BtnPhoto", "BtnAudio", "BtnVideo"}) {
        Get(block).SendNotify(NotifyClick);
    }
    Find({{"a.jpg", 1}, {"b.jpg", 1}});
    EXPECT_EQ(Page(), 3);
    EXPECT_FALSE(IsVisible("NodePhoto"));
    EXPECT_EQ(Files().GetCount(), 0);
    Get("BtnPhoto").SendNotify(NotifyClick);
    m_window->HandleMessage(WM_SEARCH_DONE, 0, 0);
    EXPECT_EQ(Files().GetCount(), 2);
}

TEST_F(TypePageTest, AnOptionStandsForItsTypes)
{
    CControlUI& firstRow = *Get("FileTypePhoto").GetItemAt(1);
    auto& jpg = dynamic_cast<COptionUI&>(*firstRow.GetItemAt(2));
    ASSERT_EQ(jpg.GetUserData(), "jpg|jpeg");
    jpg.Selected(false);
    Find({{"a.jpg", 1}, {"b.png", 1}, {"c.rm", 1}});
    EXPECT_EQ(Text("NodePhoto"), "Photos (1)");
    EXPECT_EQ(Text("NodeVideo"), "Videos (1)") << "the last option of a type wins";
    jpg.Selected(true);
    m_window->HandleMessage(WM_SEARCH_DONE, 0, 0);
    EXPECT_EQ(Text("NodePhoto"), "Photos (2)");
    EXPECT_TRUE(Get<COptionUI>("OptPhotoFile").IsSelected());
    Get<COptionUI>("OptPhotoFile").Selected(false);
    EXPECT_FALSE(jpg.IsSelected());
}

}  // namespace
