#include "ui/windows/MarkupBuilder.h"

#include "tests/ui/TestWindow.h"
#include "ui/controls/ButtonUI.h"
#include "ui/controls/LabelUI.h"
#include "ui/list/TreeNodeUI.h"

#include <QCoreApplication>
#include <QLayout>
#include <QPainter>

namespace {

// Builds a file of the skin into a column; the problems that it had.
struct Built
{
    Built(const TestSkin& files, const QString& name)
        : skin(std::make_shared<Skin>(
              SkinPackage::FromFolder(QString::fromStdString(files.Folder().string())))),
          root(skin)
    {
        MarkupBuilder builder(skin, nullptr);
        isBuilt = builder.Build(name, root);
        problems = builder.Problems().join(QLatin1Char('|')).toStdString();
        settings = builder.Settings();
    }

    std::shared_ptr<Skin> skin;
    CVerticalLayoutUI root;
    bool isBuilt = false;
    std::string problems;
    WindowSettings settings;
};

}  // namespace

TEST_F(UiTest, EveryElementIsBuiltWithoutAProblem)
{
    EXPECT_EQ(m_window.MarkupProblems().join("|").toStdString(), "");
    EXPECT_EQ(m_window.size(), QSize(900, 600));
    EXPECT_EQ(m_window.minimumSize(), QSize(400, 300));
    EXPECT_EQ(m_window.windowTitle(), "Every element");
    const std::pair<const char*, const char*> classes[] = {
        {"ToolBar1", "HorizontalLayoutUI"},
        {"MainTitle", "LabelUI"},
        {"Long", "TextUI"},
        {"TypeTree", "FileTreeUI"},
        {"NodeJpg", "TreeNodeUI"},
        {"FileList", "ListUI"},
        {"CheckAll", "ListHeaderItemUI"},
        {"DiskList", "DiskListUI"},
        {"TabPage", "TabLayoutUI"},
        {"DiskListHeader", "ListHeaderUI"},
        {"TabScan", "OptionUI"},
        {"Field", "EditUI"},
        {"progress", "ProgressUI"},
        {"BtnScan", "ButtonUI"},
        {"BtnRecoverMode", "ButtonExUI"},
        {"PreviewEdit", "RichEditUI"},
        {"Pager", "PaginationUI"},
    };
    for (const auto& [name, kind] : classes) {
        CControlUI* control = m_window.FindControl(name);
        ASSERT_NE(control, nullptr) << name;
        EXPECT_EQ(control->GetClass().toStdString(), kind) << name;
    }
    EXPECT_EQ(m_window.FindControl("missing"), nullptr);
}

TEST_F(UiTest, StylesDefaultsAndFontsReachTheControls)
{
    EXPECT_EQ(m_window.Get<CLabelUI>("Page0").Look().textColor, QColor(0x30, 0x30, 0x30));
    const auto& button = m_window.Get<CButtonUI>("BtnScan");
    EXPECT_EQ(button.Look().backImage, "file='button.png' corner='6,6,6,6'");
    EXPECT_EQ(button.height(), 30);
    EXPECT_EQ(button.GetAttribute("width"), "110");
    const Skin& skin = *m_window.GetSkin();
    // Points at 96 to the inch, whatever the screen has.
    EXPECT_EQ(skin.Font(8).pixelSize(), 26);
    EXPECT_TRUE(skin.Font(8).bold());
    EXPECT_EQ(skin.Font(99).pixelSize(), skin.Font(2).pixelSize());
    auto* node = m_window.FindControlAs<CTreeNodeUI>("NodeAudio");
    node->ApplyStyle("filetype");
    EXPECT_EQ(node->Look().textColor, QColor(0, 0x60, 0xA0));
}

TEST(MarkupBuilder, ColoursAreTakenByNameAndKnownToTheWindowToo)
{
    const TestSkin skin;
    skin.Write("colors.xml",
               "<Window><Color name='ink' value='#FF102030'/><Color name='long' value='" +
                   QString(99, 'x') + "'/></Window>");
    skin.Write("a.xml",
               "<Window bkcolor='$ink'><Include source='colors.xml'/>"
               "<Default name='Button' textcolor='$ink'/><Styles><Style name='s' "
               "value=\"textcolor='$ink' bkcolor='$ink2'\"/></Styles>"
               "<Button name='a'/><Label name='b' style='s' text='$ink$$ink$long'/></Window>");
    Built built(skin, "a.xml");
    ASSERT_TRUE(built.isBuilt) << built.problems;
    EXPECT_EQ(built.problems, "colors.xml:1: long is no colour");
    const QColor ink(0x10, 0x20, 0x30);
    EXPECT_EQ(built.root.Look().backColor, ink);
    EXPECT_EQ(dynamic_cast<CButtonUI*>(built.root.FindControl("a"))->Look().textColor, ink);
    const auto* label = dynamic_cast<CLabelUI*>(built.root.FindControl("b"));
    EXPECT_EQ(label->Look().textColor, ink);
    EXPECT_FALSE(label->Look().backColor.isValid());
    EXPECT_EQ(label->GetText(), "#FF102030$#FF102030$long");
}

TEST(MarkupBuilder, PicturesOfTwiceTheSizeAreDrawnOnSharpScreens)
{
    const TestSkin files;
    WriteFileBytes(files.Folder() / "dot.png", MakePng(4, 4, Qt::red));
    WriteFileBytes(files.Folder() / "dot@2x.png", MakePng(8, 8, Qt::blue));
    // One that is not twice the size is no such picture.
    WriteFileBytes(files.Folder() / "odd.png", MakePng(4, 4, Qt::red));
    WriteFileBytes(files.Folder() / "odd@2x.png", MakePng(9, 8, Qt::blue));
    const Skin skin(SkinPackage::FromFolder(QString::fromStdString(files.Folder().string())));
    const auto drawn = [&skin](const char* text, double ratio) {
        QImage image(16, 16, QImage::Format_ARGB32);
        image.setDevicePixelRatio(ratio);
        QPainter painter(&image);
        skin.DrawImage(painter, QRect(0, 0, 8, 8), text);
        painter.end();
        return image.pixelColor(3, 3);
    };
    EXPECT_EQ(drawn("dot.png", 1), QColor(Qt::red));
    EXPECT_EQ(drawn("dot.png", 2), QColor(Qt::blue));
    EXPECT_EQ(drawn("file='dot.png' source='2,2,4,4' corner='1,1,1,1'", 1.5), QColor(Qt::blue));
    EXPECT_EQ(drawn("odd.png", 2), QColor(Qt::red));
}

TEST(MarkupBuilder, TellsWhatItLeavesOut)
{
    const TestSkin skin;
    skin.Write(
        "a.xml",
        "<Window size='10,20'><Label name='a' colour='1'/><Unknown><Label name='b'/></Unknown>"
        "<Label name='c' style='none'/><Include source='gone.xml'/><Label><Button/></Label>"
        "<Label name='d'/></Window>");
    Built built(skin, "a.xml");
    EXPECT_TRUE(built.isBuilt);
    EXPECT_EQ(
        built.problems,
        "a.xml:1: Label has no attribute colour|a.xml:1: no element Unknown|a.xml:1: no style none|"
        "gone.xml: cannot be read|a.xml:1: Button cannot stand in LabelUI");
    EXPECT_NE(built.root.FindControl("a"), nullptr);
    EXPECT_EQ(built.root.FindControl("b"), nullptr);
    EXPECT_NE(built.root.FindControl("d"), nullptr);
}

TEST(MarkupBuilder, HostileMarkupEnds)
{
    const TestSkin skin;
    QString deep;
    for (int i = 0; i < 5000; ++i) {
        deep += "<VerticalLayout>";
    }
    const std::pair<const char*, QString> files[] = {
        {"deep.xml", deep},
        {"cut.xml", "<Window><Label name='a'>"},
        {"wrong.xml", "<Window><Label></Button></Window>"},
        {"loop.xml", "<Window><Include source='loop.xml'/></Window>"},
        {"entities.xml", "<!DOCTYPE a [<!ENTITY b 'cccccccccc'><!ENTITY d "
                         "'&b;&b;&b;&b;&b;'>]><Window><Label text='&d;'/></Window>"},
        {"many.xml", "<Window>" + QString("<Control/>").repeated(20001) + "</Window>"},
        {"empty.xml", ""},
        {"bytes.xml", QString(QChar(0)) + "<Window/>"},
    };
    for (const auto& [name, markup] : files) {
        skin.Write(name, markup);
        const Built built(skin, name);
        EXPECT_FALSE(built.isBuilt) << name;
        EXPECT_NE(built.problems, "") << name;
    }
    EXPECT_FALSE(Built(skin, "../a.xml").isBuilt);
}

TEST_F(UiTest, WhatIsHiddenLeavesItsRoom)
{
    auto& scan = m_window.Get<CButtonUI>("BtnScan");
    auto& recover = m_window.Get<CButtonUI>("BtnRecoverMode");
    const int before = recover.x();
    scan.SetVisible(false);
    m_window.Root().layout()->activate();
    QCoreApplication::processEvents();
    EXPECT_EQ(recover.x(), before - 110 - 6);
    EXPECT_FALSE(scan.IsVisible());
    EXPECT_TRUE(recover.IsVisible());
}
