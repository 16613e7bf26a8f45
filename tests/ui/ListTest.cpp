#include "tests/ui/TestWindow.h"
#include "ui/list/ListUI.h"

#include <QTest>

namespace {

using Strings = std::vector<std::string>;

std::unique_ptr<CListUI::Row> MakeRow(const QString& name, std::intptr_t tag = 0)
{
    auto row = std::make_unique<CListUI::Row>();
    row->SetName(name);
    row->SetColumnText(1, name);
    row->SetTag(tag);
    return row;
}

class ListTest : public UiTest
{
protected:
    ListTest() : list(m_window.Get<CListUI>("FileList"))
    {
        std::vector<std::unique_ptr<CListUI::Row>> rows;
        for (const char* name : {"b", "a", "c", "<a>"}) {
            rows.push_back(MakeRow(name, name[0] == 'c' ? 1 : 0));
        }
        list.AddRows(std::move(rows));
        QCoreApplication::processEvents();
    }

    std::string Order() const
    {
        std::string order;
        for (int i = 0; i < list.GetCount(); ++i) {
            order += list.GetItemAt(i)->GetName().toStdString();
        }
        return order;
    }
    // In the middle of a cell.
    void Click(int row, int column, bool isDouble = false)
    {
        const QRect cell = list.visualRect(list.model()->index(row, column));
        if (isDouble) {
            QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, cell.center());
        } else {
            QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, cell.center());
        }
    }

    CListUI& list;
};

int ByName(const CListUI::Row& a, const CListUI::Row& b, std::intptr_t direction)
{
    return static_cast<int>(direction) * a.GetColumnText(1).compare(b.GetColumnText(1));
}

int ByTag(const CListUI::Row& a, const CListUI::Row& b, std::intptr_t)
{
    return static_cast<int>(a.GetTag() - b.GetTag());
}

}  // namespace

TEST_F(ListTest, RowsAreTickedByMarkAndKey)
{
    Click(1, 0);
    EXPECT_TRUE(list.GetItemAt(1)->IsChecked());
    EXPECT_EQ(list.GetCurSel(), -1);
    Click(2, 1);
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_TRUE(list.GetItemAt(2)->IsChecked());
    EXPECT_EQ(m_window.Take(), (Strings{"list_check_click a", "itemselect FileList", "itemclick c",
                                        "list_check_click c"}));
    // From code nothing is told.
    list.GetItemAt(0)->SetChecked(true);
    EXPECT_TRUE(m_window.Take().empty());
}

TEST_F(ListTest, DoubleClicksComeFromMouseAndKey)
{
    Click(0, 2, true);
    list.SelectItem(3);
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClick(&list, Qt::Key_Up);
    EXPECT_EQ(m_window.Take(), (Strings{"list_item_dbclick b", "itemselect FileList",
                                        "list_item_dbclick <a>", "itemselect FileList"}));
    EXPECT_EQ(list.GetCurSel(), 2);
    EXPECT_FALSE(list.SelectItem(4));
}

TEST_F(ListTest, SortingKeepsEqualRowsInOrderAndTheSelection)
{
    list.SelectItem(0);
    m_window.Take();
    list.SortItems(ByTag, 0);
    EXPECT_EQ(Order(), "ba<a>c");
    list.SortItems(ByName, 1);
    EXPECT_EQ(Order(), "<a>abc");
    EXPECT_EQ(list.GetItemAt(list.GetCurSel())->GetName(), "b");
    list.SortItems(ByName, -1);
    EXPECT_EQ(Order(), "cba<a>");
    EXPECT_EQ(list.GetItemIndex(list.GetItemAt(1)), 1);
    EXPECT_TRUE(m_window.Take().empty());
}

TEST_F(ListTest, RowsComeAndGo)
{
    std::unique_ptr<CControlUI> row = MakeRow("x");
    EXPECT_TRUE(list.AddAt(row, 1));
    EXPECT_EQ(Order(), "bxac<a>");
    EXPECT_EQ(list.GetItemIndex(list.GetItemAt(4)), 4);
    std::unique_ptr<CControlUI> stranger = std::make_unique<CListHeaderItemUI>();
    EXPECT_FALSE(list.AddAt(stranger, 0));
    EXPECT_NE(stranger, nullptr);
    list.SelectItem(1);
    m_window.Take();
    EXPECT_TRUE(list.RemoveAt(1));
    EXPECT_EQ(list.GetCurSel(), -1);
    EXPECT_FALSE(list.RemoveAt(9));
    EXPECT_TRUE(list.Remove(list.GetItemAt(0)));
    EXPECT_EQ(Order(), "ac<a>");
    list.RemoveAll();
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetCurSel(), -1);
    EXPECT_TRUE(m_window.Take().empty());
}

TEST_F(ListTest, ARowMayGoWhileItTells)
{
    list.GetItemAt(0)->AddHandler([this](const Notification&) {
        list.RemoveAll();
        return true;
    });
    Click(0, 0);
    EXPECT_EQ(list.GetCount(), 0);
}

TEST_F(ListTest, HeadersAreClickedByMouseAndKey)
{
    auto* header = list.GetHeader();
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {header->sectionPosition(2) + 40, 5});
    header->setFocus(Qt::TabFocusReason);
    QTest::keyClick(header, Qt::Key_Right);
    QTest::keyClick(header, Qt::Key_Space);
    EXPECT_EQ(m_window.Take(), (Strings{"headerclick Size", "headerclick FileName"}));
    EXPECT_EQ(header->sectionSize(0), 30);
    EXPECT_EQ(header->sectionSize(1), list.viewport()->width() - 110);
    m_window.Get<CListHeaderItemUI>("Size").SetAttribute("bkimage",
                                                         "file='banner.png' corner='0,1,13,1'");
    EXPECT_FALSE(header->grab().isNull());
}

TEST_F(ListTest, AHundredThousandRowsAreNoWidgets)
{
    const auto widgets = m_window.findChildren<QWidget*>().size();
    std::vector<std::unique_ptr<CListUI::Row>> rows;
    for (int i = 0; i < 100000; ++i) {
        rows.push_back(MakeRow(QString::number(i)));
    }
    list.AddRows(std::move(rows));
    QCoreApplication::processEvents();
    EXPECT_EQ(m_window.findChildren<QWidget*>().size(), widgets);
    list.SelectItem(100003);
    EXPECT_TRUE(list.viewport()->rect().intersects(list.visualRect(list.currentIndex())));
    EXPECT_EQ(m_window.FindControl("99999"), nullptr);
}
