#include "tests/ui/TestWindow.h"
#include "ui/controls/ButtonUI.h"
#include "ui/list/ListUI.h"
#include "ui/windows/AccessibleControls.h"

#include <QAccessible>
#include <QMenu>
#include <QTest>

#include <ostream>

namespace {

struct NamedCase
{
    const char* control;
    QAccessible::Role role;
    const char* name;
};

std::string NameOf(QAccessibleInterface* interface)
{
    return interface != nullptr ? interface->text(QAccessible::Name).toStdString() : "nothing";
}

QAccessibleInterface* Of(const CControlUI* control)
{
    return QAccessible::queryAccessibleInterface(control->Widget());
}

}  // namespace

TEST_F(UiTest, EveryControlHasARoleAndAPlainName)
{
    m_window.FindControl("MainTitle")
        ->SetText("{f 7}{c #316D1E}12{/c}{/f} files on " + PlainRun("<a>"));
    const NamedCase cases[] = {
        {"MainTitle", QAccessible::StaticText, "12 files on <a>"},
        {"BtnScan", QAccessible::PushButton, "Start scan"},
        {"BtnRecoverMode", QAccessible::PushButton, "Recover"},
        {"OptPhoto", QAccessible::CheckBox, "Photo"},
        {"TabScan", QAccessible::RadioButton, "Scan"},
        {"progress", QAccessible::ProgressBar, "40%"},
        {"Field", QAccessible::EditableText, "Search"},
        {"PreviewEdit", QAccessible::EditableText, "Preview"},
        {"FileList", QAccessible::Tree, "Files"},
        {"TypeTree", QAccessible::Tree, "File types"},
    };
    for (const NamedCase& named : cases) {
        QAccessibleInterface* interface = Of(m_window.FindControl(named.control));
        ASSERT_NE(interface, nullptr) << named.control;
        EXPECT_EQ(interface->role(), named.role) << named.control;
        EXPECT_EQ(NameOf(interface), named.name) << named.control;
    }
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&m_window);
    EXPECT_EQ(window->role(), QAccessible::Dialog);
    EXPECT_EQ(NameOf(window), "Every element");
    EXPECT_TRUE(Of(m_window.FindControl("PreviewEdit"))->state().readOnly);
}

// Assistive software that runs already asks while the markup is being read, and keeps the answer.
TEST(AccessibilityTest, AnOptionThatWasAskedBeforeItHadItsGroupIsOneOfIt)
{
    InstallAccessibleControls();
    COptionUI option(std::make_shared<Skin>(SkinPackage::FromFolder({})));
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&option);
    EXPECT_EQ(interface->role(), QAccessible::CheckBox);
    interface->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_TRUE(interface->state().checked);
    option.SetAttribute("group", "pages");
    EXPECT_EQ(interface->role(), QAccessible::RadioButton);
}

TEST_F(UiTest, TheOpenMenuHangsFromTheWindow)
{
    m_window.show();
    m_window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&m_window));
    QAccessibleInterface* window = QAccessible::queryAccessibleInterface(&m_window);
    const int controls = window->childCount();
    QMenu menu;
    menu.addAction("About");
    menu.popup(QPoint(10, 10));
    ASSERT_EQ(window->childCount(), controls + 1);
    QAccessibleInterface* shown = window->child(controls);
    EXPECT_EQ(shown->role(), QAccessible::PopupMenu);
    EXPECT_EQ(window->indexOfChild(shown), controls);
    menu.hide();
    EXPECT_EQ(window->childCount(), controls);
}

TEST_F(UiTest, StatesAreToldAndActionsWork)
{
    QAccessibleInterface* scan = Of(m_window.FindControl("TabScan"));
    QAccessibleInterface* types = Of(m_window.FindControl("TabFileType"));
    EXPECT_TRUE(scan->state().checked);
    types->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(types->state().checked);
    EXPECT_FALSE(scan->state().checked);
    EXPECT_TRUE(Of(m_window.FindControl("BtnOff"))->state().disabled);
}

TEST_F(UiTest, RowsAndNodesAreReadOutWithTheirStates)
{
    auto& list = m_window.Get<CListUI>("FileList");
    auto row = std::make_unique<CListUI::Row>();
    row->SetColumnText(1, "<a>.jpg");
    row->SetChecked(true);
    std::unique_ptr<CControlUI> control = std::move(row);
    ASSERT_TRUE(list.Add(control));
    QCoreApplication::processEvents();
    QAccessibleTableInterface* table = Of(&list)->tableInterface();
    ASSERT_NE(table, nullptr);
    QAccessibleInterface* mark = table->cellAt(0, 0);
    EXPECT_EQ(NameOf(mark), "<a>.jpg");
    EXPECT_TRUE(mark->state().checkable);
    EXPECT_TRUE(mark->state().checked);
    EXPECT_EQ(NameOf(table->cellAt(0, 1)), "<a>.jpg");
    EXPECT_EQ(table->columnDescription(0), "All");
    QAccessibleInterface* node =
        Of(m_window.FindControl("TypeTree"))->tableInterface()->cellAt(0, 0);
    EXPECT_EQ(NameOf(node), "Photo");
    EXPECT_TRUE(node->state().checkable);
}
