#include "tests/ui/TestWindow.h"
#include "ui/custom/PaginationUI.h"

#include <QTest>

namespace {

using Strings = std::vector<std::string>;

class PaginationTest : public UiTest
{
protected:
    PaginationTest() : pager(m_window.Get<CPaginationUI>("Pager")) {}

    // Everything that shows between "Prev" and "Next", in order; the current page in brackets.
    std::string Shown() const
    {
        std::string shown;
        for (int i = 1; i + 1 < pager.GetCount(); ++i) {
            const CControlUI* child = pager.GetItemAt(i);
            if (child->IsVisible()) {
                const auto* option = dynamic_cast<const COptionUI*>(child);
                const std::string text = child->GetText().toStdString();
                shown +=
                    (option != nullptr && option->IsSelected() ? "[" + text + "]" : text) + " ";
            }
        }
        return shown;
    }
    CButtonUI& Prev() const { return dynamic_cast<CButtonUI&>(*pager.GetItemAt(0)); }
    CButtonUI& Next() const
    {
        return dynamic_cast<CButtonUI&>(*pager.GetItemAt(pager.GetCount() - 1));
    }
    void ClickPage(const QString& text)
    {
        for (int i = 0; i < pager.GetCount(); ++i) {
            auto* button = dynamic_cast<COptionUI*>(pager.GetItemAt(i));
            if (button != nullptr && button->IsVisible() && button->GetText() == text) {
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << text.toStdString();
    }

    CPaginationUI& pager;
};

}  // namespace

TEST_F(PaginationTest, ShowsAllOrTheEndsAndTheMiddle)
{
    EXPECT_EQ(pager.GetCurrentPage(), 0);
    pager.SetPageCount(5);
    EXPECT_EQ(Shown(), "1 2 3 4 5 ");
    pager.SetPageCount(50);
    pager.SetCurrentPage(25);
    EXPECT_EQ(Shown(), "1 2 ... 22 23 24 [25] 26 27 28 ... 49 50 ");
    EXPECT_EQ(m_window.Take(), Strings{"updatepage Pager"});
    // Fewer pages than the current one: nothing is laid out.
    pager.SetPageCount(3);
    EXPECT_EQ(Shown(), "1 2 ... 22 23 24 [25] 26 27 28 ... 49 50 ");
}

TEST_F(PaginationTest, ButtonsGoToTheirPages)
{
    pager.SetPageCount(50);
    pager.SetCurrentPage(1);
    m_window.Take();
    QTest::mouseClick(&Prev(), Qt::LeftButton);
    QTest::keyClick(&Next(), Qt::Key_Space);
    EXPECT_EQ(pager.GetCurrentPage(), 2);
    ClickPage("9");
    EXPECT_EQ(Shown(), "1 2 ... 6 7 8 [9] 10 11 12 ... 49 50 ");
    ClickPage("9");
    QTest::mouseClick(&Prev(), Qt::LeftButton);
    EXPECT_EQ(pager.GetCurrentPage(), 8);
    EXPECT_EQ(m_window.Take(), Strings(3, "updatepage Pager"));
    ClickPage("50");
    QTest::mouseClick(&Next(), Qt::LeftButton);
    EXPECT_EQ(pager.GetCurrentPage(), 50);
}

TEST_F(PaginationTest, AJumpFromTheFirstToTheLastPageLeavesTheWayBackDisabled)
{
    pager.SetPageCount(50);
    pager.SetCurrentPage(1);
    EXPECT_FALSE(Prev().IsEnabled());
    ClickPage("50");
    EXPECT_FALSE(Prev().IsEnabled());
    EXPECT_FALSE(Next().IsEnabled());
    ClickPage("44");
    EXPECT_TRUE(Prev().IsEnabled());
    EXPECT_TRUE(Next().IsEnabled());
}
