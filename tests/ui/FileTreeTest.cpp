#include "tests/ui/TestWindow.h"
#include "ui/custom/FileTreeUI.h"

#include <QTest>

namespace {

using Strings = std::vector<std::string>;

class FileTreeTest : public UiTest
{
protected:
    FileTreeTest()
        : tree(m_window.Get<CFileTreeUI>("TypeTree")),
          photo(m_window.Get<CTreeNodeUI>("NodePhoto")),
          jpg(m_window.Get<CTreeNodeUI>("NodeJpg")),
          png(m_window.Get<CTreeNodeUI>("NodePng"))
    {
    }

    // "+" checked, "~" partly, "-" not: the category, then its two types.
    std::string States() const
    {
        std::string states;
        for (const CTreeNodeUI* node : {&photo, &jpg, &png}) {
            const CTreeNodeButtonUI& box = node->GetCheckBox();
            states += box.IsPartial() ? '~' : (box.IsSelected() ? '+' : '-');
        }
        return states;
    }
    bool IsOpen(const CTreeNodeUI& node) const
    {
        return tree.isExpanded(tree.model()->index(node.GetIndex(), 0));
    }

    CFileTreeUI& tree;
    CTreeNodeUI& photo;
    CTreeNodeUI& jpg;
    CTreeNodeUI& png;
};

}  // namespace

TEST_F(FileTreeTest, ABoxGoesDownAndUp)
{
    photo.GetCheckBox().Selected(true);
    EXPECT_EQ(States(), "+++");
    jpg.GetCheckBox().Selected(false);
    EXPECT_EQ(States(), "~-+");
    EXPECT_TRUE(photo.GetCheckBox().IsSelected());
    png.GetCheckBox().Selected(false);
    EXPECT_EQ(States(), "---");
    jpg.GetCheckBox().Selected(true);
    png.GetCheckBox().Selected(true);
    EXPECT_EQ(States(), "+++");
    // One notification a change, whatever else has changed with it.
    EXPECT_EQ(m_window.Take(), Strings(5, "checkboxselectchanged "));
}

TEST_F(FileTreeTest, APartlyCheckedTypeMakesTheCategoryPartlyChecked)
{
    // What the list does when some of its rows are ticked.
    jpg.GetCheckBox().SetState(true, true);
    tree.UpdateAncestors(jpg);
    EXPECT_EQ(States(), "~~-");
    png.GetCheckBox().Selected(true);
    EXPECT_EQ(States(), "~~+");
    photo.GetCheckBox().Selected(false);
    EXPECT_EQ(States(), "---");
}

TEST_F(FileTreeTest, FoldersOpenWithAllBelow)
{
    EXPECT_FALSE(IsOpen(photo));
    photo.GetFolderButton().Selected(true);
    EXPECT_TRUE(IsOpen(photo));
    EXPECT_TRUE(jpg.GetFolderButton().IsSelected());
    const QRect row = tree.visualRect(tree.model()->index(0, 0));
    QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, row.center());
    EXPECT_FALSE(IsOpen(photo));
    EXPECT_FALSE(jpg.GetFolderButton().IsSelected());
    EXPECT_EQ(m_window.Take(),
              (Strings{"itemexpand NodePhoto", "itemexpand NodePhoto", "itemdbclick NodePhoto"}));
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, {}, {row.left() + 12, row.center().y()});
    EXPECT_TRUE(IsOpen(photo));
}

TEST_F(FileTreeTest, IsWorkedWithByKeysAlone)
{
    tree.setFocus(Qt::TabFocusReason);
    tree.SelectNode(&photo);
    QTest::keyClick(&tree, Qt::Key_Right);
    EXPECT_TRUE(IsOpen(photo));
    QTest::keyClick(&tree, Qt::Key_Right);
    EXPECT_EQ(tree.GetSelectedNode(), &jpg);
    QTest::keyClick(&tree, Qt::Key_Space);
    EXPECT_EQ(States(), "~+-");
    QTest::keyClick(&tree, Qt::Key_Left);
    QTest::keyClick(&tree, Qt::Key_Left);
    EXPECT_FALSE(IsOpen(photo));
    QTest::keyClick(&tree, Qt::Key_Down);
    EXPECT_EQ(tree.GetSelectedNode()->GetName(), "NodeAudio");
    QTest::keyClick(&tree, Qt::Key_Return);
    EXPECT_TRUE(tree.GetSelectedNode()->GetFolderButton().IsSelected());
}

TEST_F(FileTreeTest, NodesComeAndGoAndHide)
{
    auto& audio = m_window.Get<CTreeNodeUI>("NodeAudio");
    tree.SelectNode(&jpg);
    m_window.Take();
    photo.RemoveAll();
    EXPECT_EQ(tree.GetSelectedNode(), nullptr);
    EXPECT_EQ(m_window.FindControl("NodeJpg"), nullptr);
    audio.SetVisible(false);
    EXPECT_TRUE(tree.isRowHidden(1, {}));
    auto child = std::make_unique<CTreeNodeUI>();
    CTreeNodeUI* mp3 = child.get();
    child->SetText("mp3 (4)");
    child->GetFolderButton().SetAttribute("normalimage", "file='open.png'");
    std::unique_ptr<CControlUI> control = std::move(child);
    ASSERT_TRUE(audio.Add(control));
    mp3->ApplyStyle("filetype");
    EXPECT_EQ(mp3->GetFolderButton().GetAttribute("normalimage"), "file='open.png'");
    audio.SetVisible(true);
    audio.GetFolderButton().Selected(true);
    tree.SelectNode(mp3);
    EXPECT_EQ(m_window.Take(), (Strings{"itemexpand NodeAudio", "itemselect TypeTree"}));
    EXPECT_FALSE(tree.grab().isNull());
    tree.RemoveAll();
    EXPECT_EQ(tree.GetCount(), 0);
    EXPECT_EQ(m_window.Take(), Strings{});
}
