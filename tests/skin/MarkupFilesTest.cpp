// The markup files hold what the program looks for: controls by name, pictures, fonts, styles, and the types of files in their
// order.
#include "tests/skin/SkinFiles.h"
#include "ui/controls/ButtonUI.h"
#include "ui/list/TreeNodeUI.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

struct WindowNames
{
    const char* file;
    QSize minimum;
    const char* sections;  // of the language files, whose keys name controls here
    const char* names;
};

const WindowNames Windows[] = {
    {"skin",
     {1000, 650},
     "MainWnd",
     "BtnAssist BtnScan BtnAdvanceScan BtnLoadImage BtnRecover BtnPrev BtnNext BtnCreateImage "
     "BtnRecoverMode BtnCreateImageMode BtnPhoto BtnAudio BtnVideo ToolBar1 ToolBar2 ToolBar3 "
     "ToolBtn "
     "SubBar1 SubBar2 TabScan TabFileType TabRecover TabPage PreviewEdit SelectedFileInfo "
     "ToolBar2Logo "
     "FilterEdit FilterCount OptHideDoubles OptGrid TargetChooser "
     "CheckAll PartitionListBar WaitBar WaitText TypeTree FileList FileGrid DiskList "
     "DiskListHeader "
     "NodePhoto NodeAudio "
     "NodeVideo "
     "StopText StartText Txt1 Txt2 TxtMainInfo MainTitle LblProductName Label1 Label2 Label3 "
     "Label4 Label5 Label6 "
     "Label7 "
     "Label8 Label9 Label10 LabelDiskInfo FileTypePhoto FileTypeAudio FileTypeVideo OptPhotoFile "
     "OptAudioFile OptVideoFile FileName Size ModifiedTime CreatedTime Path Type DiskName "
     "DiskFileSystem DiskSize minbtn maxbtn closebtn"},
    {"ScanProcessWnd",
     {},
     "ScanWnd",
     "title stage percent time sectors totalfile progress strip closebtn cancelbtn"},
    {"SearchProcessWnd", {}, "SearchProcessWnd", "title stage percent progress closebtn cancelbtn"},
    {"RecoverProcessWnd",
     {},
     "RecoverProcessWnd",
     "title current recovered percent progress closebtn OpenBtn FinishBtn CancelBtn DetailBtn "
     "DetailList "
     "File Status Damage SaveBtn summary"},
    {"PreviewProcessWnd",
     {},
     "PreviewProcessWnd",
     "title FileName stage percent progress closebtn cancelbtn"},
    {"CreateImageProcessWnd",
     {},
     "CreateImageWnd",
     "title stage percent time sectors progress closebtn cancelbtn"},
    {"RescueProcessWnd",
     {},
     "CreateImageWnd",
     "title stage percent step rescued unreadable time strip progress closebtn cancelbtn"},
    {"PreviewWnd",
     {600, 500},
     "",
     "PreviewEdit FileName PrevBar NextBar PrevBtn NextBtn RecoveryBtn CancelBtn"},
    {"MessageBox_Error", {300, 130}, "", "title message okbtn closebtn"},
    {"MessageBox_Confirm", {300, 130}, "MessageBox", "title message okbtn cancelbtn closebtn"},
    {"MessageBox_Information", {300, 130}, "", "title message okbtn closebtn"},
    {"MessageBox_Warning", {300, 130}, "", "title message okbtn closebtn"},
    {"MessageBox_Question", {300, 130}, "MessageBox", "title message okbtn cancelbtn closebtn"},
    {"menu_assist",
     {},
     "MenuWnd",
     "item_language item_help item_faq item_support item_about item_exit"},
    {"LikeItWnd", {}, "", "okbtn"},
    {"DiskList", {}, "", "CreateImageDiskList DiskName DiskFileSystem DiskSize"},
};
// Those that other files include.
const std::set<std::string> Parts = {"Look", "ScanDisk", "FileType", "RecoverFile"};
// Texts that the program gives to nodes by itself.
const std::set<std::string> KeysWithoutControl = {"MSG0807", "MSG0808", "MSG0809"};

std::unique_ptr<SceneWindow> MakeWindow(const WindowNames& wanted)
{
    auto window =
        std::make_unique<SceneWindow>(QStringLiteral("xml/%1.xml").arg(QLatin1String(wanted.file)));
    return window->Create(nullptr) ? std::move(window) : nullptr;
}

QStringList AllMatches(const QString& text, const char* pattern)
{
    QStringList found;
    auto matches = QRegularExpression(QLatin1String(pattern)).globalMatch(text);
    while (matches.hasNext()) {
        found.append(matches.next().captured(1));
    }
    return found;
}

// In the order of the markup.
std::vector<COptionUI*> TypesIn(const CControlUI& block)
{
    std::vector<COptionUI*> options;
    for (int row = 1; row < block.GetCount(); ++row) {
        const CControlUI* line = block.GetItemAt(row);
        for (int i = 0; i < line->GetCount(); ++i) {
            if (auto* option = dynamic_cast<COptionUI*>(line->GetItemAt(i))) {
                options.push_back(option);
            }
        }
    }
    return options;
}

struct TypeBlock
{
    const char* block;
    const char* option;
    const char* extensions;  // "extension=userdata" where that is another
};

const TypeBlock TypeBlocks[] = {
    {"FileTypePhoto", "OptPhotoFile",
     "bmp gif jpg=jpg|jpeg png psd tif=tif|tiff pcx=pcx|scr ico nef nrw crw cr2 sr2 arw srf djvu "
     "pgm "
     "k25=cr2 kdc dcr raf iff pbm mef jp2 mos x3f orf erf indd pef psp mrw=cr2 dng=cr2 raw pct tga "
     "thm"},
    {"FileTypeAudio", "OptAudioFile",
     "mp3 wav aiff rps mid=mid|midi m4a=m4a|m4p au ogg wma rm ra acd amr at3 caf dss m4r nra snd"},
    {"FileTypeVideo", "OptVideoFile",
     "rmvb rm mpeg mov avi wmv asf mp4 m4v 3gp dv 3g2 m4b mkv mts divx ogm moi vob ajp f4v mqv=mvq "
     "svi "
     "vid tod hdmov mod mxf lrv m2t"},
};

}  // namespace

TEST_F(SkinTest, EveryWindowIsMadeWithTheControlsThatTheProgramLooksFor)
{
    std::set<std::string> files = Parts;
    for (const WindowNames& wanted : Windows) {
        SCOPED_TRACE(wanted.file);
        files.insert(wanted.file);
        const auto window = MakeWindow(wanted);
        ASSERT_NE(window, nullptr);
        EXPECT_EQ(window->MarkupProblems().join("\n").toStdString(), "");
        EXPECT_EQ(window->minimumSize(), wanted.minimum.expandedTo(QSize(0, 0)));
        for (const QString& name : QString::fromLatin1(wanted.names).split(' ')) {
            EXPECT_NE(window->FindControl(name), nullptr) << name.toStdString();
        }
        EXPECT_EQ(window->FindControl("BtnLikeIt"), nullptr);
    }
    EXPECT_EQ(NamesIn(LUMIVAULT_SKIN "/xml", ".xml"), files);
    const auto preview = MakeWindow({"PreviewProcessWnd", {}, "", ""});
    EXPECT_EQ(preview->FindControl("CancelBtn"), nullptr);
    for (const std::string& file : files) {
        EXPECT_FALSE(MarkupOf(file).contains("<Pagination")) << file;
    }
}

TEST_F(SkinTest, EveryKeyOfALanguageNamesAControl)
{
    for (const std::string& stem : LanguageStems()) {
        const SceneTexts texts = TextsOf(stem);
        std::set<std::string> sections = {"Messages", "Desktop", "Extras"};
        for (const WindowNames& wanted : Windows) {
            const auto window = MakeWindow(wanted);
            sections.insert(wanted.sections);
            for (const auto& [key, text] : texts.Section(wanted.sections).Entries()) {
                EXPECT_TRUE(window->FindControl(QString::fromStdString(key)) != nullptr ||
                            KeysWithoutControl.contains(key))
                    << stem << " " << wanted.sections << " " << key;
            }
        }
        for (const std::string& section : texts.SectionNames()) {
            EXPECT_TRUE(sections.contains(section)) << stem << " " << section;
        }
    }
}

TEST_F(SkinTest, PicturesStylesAndFontsThatAreNamedAreThere)
{
    // Named by the program, not by the markup.
    QStringList pictures = {
        "banner_bg.png",       "banner_bg1.png",       "banner_bg2.png",     "scan_files.png",
        "advance_scan.png",    "recover_file.png",     "btn_scan.png",       "btn_create_image.png",
        "image_files.png",     "image_file.png",       "physical_drive.png", "removable_drive.png",
        "drive.png",           "drive_usb.png",        "expand_flag.png",    "list_header_bg.png",
        "list_header_asc.png", "list_header_desc.png", "unchecked.png",      "checked.png",
        "point.png",           "FileIcon/folder.png",  "head_lost.png",
    };
    for (const char* kind : {"exe", "image", "music", "doc", "video", "zip", "default"}) {
        pictures << QStringLiteral("FileIcon/%1.png").arg(kind)
                 << QStringLiteral("FileIcon/%1_error.png").arg(kind);
    }
    for (const std::string& file : NamesIn(LUMIVAULT_SKIN "/xml", ".xml")) {
        const QString markup = MarkupOf(file);
        pictures << AllMatches(markup, "([\\w/]+\\.png)");
        for (const QString& font : AllMatches(markup, "(?:font=\"|\\{f )(\\w+)")) {
            EXPECT_LT(font.toUInt(), 10U) << file << " " << font.toStdString();
        }
    }
    const auto window = MakeWindow(Windows[0]);
    const Skin& skin = *window->GetSkin();
    for (const QString& name : pictures) {
        const QSize size = skin.Picture(name).size();
        EXPECT_FALSE(size.isEmpty()) << name.toStdString();
        EXPECT_EQ(skin.Picture(name.chopped(4) + "@2x.png").size(), size * 2) << name.toStdString();
    }
    EXPECT_GT(pictures.size(), 150);
    for (const char* style : {"HeaderItem", "treenode", "partitionnode", "filetype", "foldernode",
                              "PaginationTag", "BtnGreen", "BtnBlue", "OptFileType"}) {
        EXPECT_TRUE(skin.HasStyle(style)) << style;
    }
    const int points[] = {10, 10, 11, 11, 12, 12, 13, 13, 20, 28};
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(skin.Font(i).pixelSize(), points[i] * 96 / 72) << i;
        EXPECT_EQ(skin.Font(i).bold(), i >= 8 || i % 2 == 1) << i;
        EXPECT_EQ(skin.Font(i).family(), "Tahoma");
    }
    EXPECT_EQ(skin.Font(-1), skin.Font(2));
}

TEST_F(SkinTest, TypesOfFilesStandInTheirOrderAllTicked)
{
    const auto window = MakeWindow(Windows[0]);
    std::set<QString> icons;
    for (const TypeBlock& wanted : TypeBlocks) {
        const CControlUI* block = window->FindControl(wanted.block);
        ASSERT_NE(block, nullptr);
        EXPECT_NE(block->GetItemAt(0)->FindControl(wanted.option), nullptr) << wanted.option;
        const std::vector<COptionUI*> options = TypesIn(*block);
        const QStringList extensions = QString::fromLatin1(wanted.extensions).split(' ');
        ASSERT_EQ(options.size(), static_cast<std::size_t>(extensions.size())) << wanted.block;
        for (std::size_t i = 0; i < options.size(); ++i) {
            const QString entry = extensions[static_cast<qsizetype>(i)];
            const QString extension = entry.section('=', 0, 0);
            EXPECT_EQ(options[i]->GetUserData(), entry.section('=', -1)) << entry.toStdString();
            EXPECT_TRUE(options[i]->isChecked()) << entry.toStdString();
            const QString text = options[i]->GetText();
            EXPECT_TRUE(text.endsWith(" (." + extension + ")")) << text.toStdString();
            EXPECT_GT(text.indexOf('('), 1) << text.toStdString();
            const QString icon = options[i]->GetAttribute("bkimage").section(' ', 0, 0);
            EXPECT_TRUE(icon.startsWith("file='Icon/") && icon.endsWith("'")) << icon.toStdString();
            icons.insert(icon);
        }
    }
    EXPECT_EQ(icons.size(), 87U);
}

TEST_F(SkinTest, TheTabKeyGoesThroughThePagesInTheOrderOfTheWork)
{
    const auto window = MakeScene(AllScenes()[2], TextsOf("English"));
    window->show();
    std::vector<std::string> names;
    const QWidget* first = window->FindControlAs<CButtonUI>("BtnPrev");
    for (const QWidget* widget = first; names.size() < 8; widget = widget->nextInFocusChain()) {
        if (widget->isVisible() && widget->isEnabled() && widget->focusPolicy() & Qt::TabFocus &&
            !widget->objectName().isEmpty()) {
            names.push_back(widget->objectName().toStdString());
        }
    }
    const std::vector<std::string> expected = {"BtnPrev", "BtnLoadImage", "BtnAdvanceScan",
                                               "BtnScan"};
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 4), expected);
}
