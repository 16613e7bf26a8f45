#include "tools/skinview/scenes/MainScenes.h"

#include "ui/controls/ButtonUI.h"
#include "ui/controls/ComboUI.h"
#include "ui/controls/ContainerUI.h"
#include "ui/controls/RichEditUI.h"
#include "ui/custom/DiskListUI.h"
#include "ui/custom/FileTreeUI.h"
#include "ui/custom/ListImageTextNodeUI.h"

#include <QImage>
#include <QPainter>

#include <utility>

namespace {

struct PageLook
{
    const char* tab;
    const char* color;
    const char* banner;
    const char* logo;
    int page;
};

void SelectPage(const SceneWindow& window, const PageLook& look)
{
    Show(window, {"ToolBar2", "ToolBar3", "ToolBtn", "SubBar2", "Txt1", "Txt2"}, true);
    Show(window, {"SubBar1"}, false);
    for (const char* tab : {"TabScan", "TabFileType", "TabRecover"}) {
        window.FindControl(QLatin1String(tab))->SetEnabled(true);
    }
    window.FindControlAs<COptionUI>(QLatin1String(look.tab))->Selected(true);
    window.FindControl(QStringLiteral("Txt1"))
        ->SetAttribute(QStringLiteral("textcolor"), QLatin1String(look.color));
    window.FindControl(QStringLiteral("ToolBar2"))
        ->SetAttribute(
            QStringLiteral("bkimage"),
            QStringLiteral("file='%1' corner='0,0,0,70'").arg(QLatin1String(look.banner)));
    window.FindControl(QStringLiteral("ToolBar2Logo"))
        ->SetAttribute(QStringLiteral("bkimage"),
                       QStringLiteral("file='%1' dest='15,5,65,55'").arg(QLatin1String(look.logo)));
    window.FindControlAs<CTabLayoutUI>(QStringLiteral("TabPage"))->SelectItem(look.page);
}

struct Drive
{
    const char* text;
    const char* system;
    const char* size;
    bool isRemovable;
};

void AddDisk(CDiskListUI& list, const QString& text, const std::vector<Drive>& drives)
{
    auto head = std::make_unique<CListImageTextNodeUI>();
    head->SetColumnText(0, text);
    CListExUI::Node* node = list.AddNode(std::move(head), nullptr);
    for (const Drive& drive : drives) {
        auto row = std::make_unique<CListImageTextNodeUI>();
        row->SetColumnText(0, QStringLiteral("{f 5}{x 2}%1{/f}").arg(QLatin1String(drive.text)));
        row->SetColumnText(1, QStringLiteral("{f 5}%1{/f}").arg(QLatin1String(drive.system)));
        row->SetColumnText(2, QStringLiteral("{f 5}%1{/f}").arg(QLatin1String(drive.size)));
        row->SetIcon(drive.isRemovable ? QStringLiteral("file='drive_usb.png' dest='28,0,50,24'")
                                       : QStringLiteral("file='drive.png' dest='28,0,50,24'"));
        list.AddNode(std::move(row), node);
    }
}

void FillDisks(const SceneWindow& window, const SceneTexts& texts)
{
    auto& list = *window.FindControlAs<CDiskListUI>(QStringLiteral("DiskList"));
    const QString head = QStringLiteral("{f 5}{x 5}{i %1 1 0}{x 2}%2 %3{/5}");
    AddDisk(
        list, head.arg("physical_drive.png", texts.Message("MSG0201"), "1"),
        {{"C:\\ System", "NTFS", "237.46 GB", false}, {"D:\\ Data", "NTFS", "693.51 GB", false}});
    AddDisk(list, head.arg("removable_drive.png", texts.Message("MSG0202"), "2"),
            {{"E:\\ CAMERA", "FAT32", "29.71 GB", true}, {"2:\\ ", "exFAT", "512.00 MB", true}});
    AddDisk(list, QStringLiteral("{f 7}{x 5}{i image_files.png 1 0}{x 2}Image File{/f}"), {});
    list.SelectItem(4);
    const std::pair<const char*, QString> facts[] = {
        {"MSG0203", "E"},        {"MSG0204", "CAMERA"},   {"MSG0205", "FAT32"},
        {"MSG0206", "29.71 GB"}, {"MSG0207", "21.08 GB"}, {"MSG0208", "8.63 GB"}};
    int number = 0;
    for (const auto& [key, value] : facts) {
        window.FindControl(QStringLiteral("Label%1").arg(++number))
            ->SetText(texts.Message(key) + QLatin1Char(' ') + value);
    }
    SetTexts(window, {{"Label7", texts.Extra("EXT0105") + QStringLiteral(" /dev/sdb1")},
                      {"Label8", texts.Extra("EXT0106") + QStringLiteral(" /media/camera")},
                      {"Label9", texts.Extra("EXT0107") + QStringLiteral(" Multi-Card Reader")},
                      {"Label10", texts.Extra("EXT0110", {QStringLiteral("BitLocker")})}});
}

CTreeNodeUI& AddKind(CTreeNodeUI& parent, const QString& picture, const QString& text)
{
    auto made = std::make_unique<CTreeNodeUI>();
    CTreeNodeUI& node = *made;
    std::unique_ptr<CControlUI> child = std::move(made);
    parent.Add(child);
    node.ApplyStyle(QStringLiteral("filetype"));
    node.SetText(text);
    for (const char* name : {"normalimage", "hotimage", "selectedimage", "selectedhotimage"}) {
        node.GetFolderButton().SetAttribute(QLatin1String(name),
                                            QStringLiteral("file='%1'").arg(picture));
    }
    return node;
}

void FillTree(const SceneWindow& window, const SceneTexts& texts)
{
    struct Kind
    {
        const char* parent;
        const char* text;
        const char* total;
        std::vector<std::pair<const char*, const char*>> children;
    };
    const Kind kinds[] = {
        {"NodePhoto",
         "MSG0807",
         " (1284)",
         {{"Icon/photo_jpg.png", "JPG (1150)"},
          {"Icon/photo_png.png", "PNG (96)"},
          {"Icon/photo_cr2.png", "CR2 (38)"}}},
        {"NodeAudio", "MSG0808", " (57)", {{"Icon/audio_mp3.png", "MP3 (57)"}}},
        {"NodeVideo",
         "MSG0809",
         " (23)",
         {{"Icon/video_mp4.png", "MP4 (17)"}, {"Icon/video_mov.png", "MOV (6)"}}},
    };
    CTreeNodeUI* first = nullptr;
    for (const Kind& kind : kinds) {
        auto& node = *window.FindControlAs<CTreeNodeUI>(QLatin1String(kind.parent));
        node.SetVisible(true);
        node.SetText(texts.Text("MainWnd", QLatin1String(kind.text)) + QLatin1String(kind.total));
        for (const auto& [picture, text] : kind.children) {
            CTreeNodeUI& child = AddKind(node, QLatin1String(picture), QLatin1String(text));
            first = first == nullptr ? &child : first;
        }
        node.GetFolderButton().Selected(true);
    }
    first->GetCheckBox().SetState(true, true);
    window.FindControlAs<CTreeNodeUI>(QStringLiteral("NodePhoto"))
        ->GetCheckBox()
        .SetState(true, true);
    window.FindControlAs<CFileTreeUI>(QStringLiteral("TypeTree"))->SelectNode(first);
}

void FillFiles(const SceneWindow& window)
{
    auto& list = *window.FindControlAs<CListUI>(QStringLiteral("FileList"));
    constexpr int Count = 24;
    for (int i = 0; i < Count; ++i) {
        auto row = std::make_unique<CListUI::Row>();
        row->SetColumnText(1, QStringLiteral("IMG_%1.jpg").arg(2041 + i));
        row->SetColumnImage(1, QStringLiteral("file='Icon/photo_jpg.png'"));
        row->SetColumnText(2, QStringLiteral("%1.%2 MB").arg(2 + i % 5).arg(10 + i * 3));
        row->SetColumnText(3, QStringLiteral("2024-10-%1 14:%2:07").arg(10 + i % 20).arg(10 + i));
        row->SetColumnText(
            4, i % 3 == 0 ? QStringLiteral("    ----    ")
                          : QStringLiteral("2024-10-%1 14:%2:05").arg(10 + i % 20).arg(10 + i));
        row->SetColumnText(5, QStringLiteral("    ----    "));
        row->SetColumnText(6, QStringLiteral("jpg"));
        row->SetChecked(i % 4 != 3);
        std::unique_ptr<CControlUI> child = std::move(row);
        list.Add(child);
    }
    list.SelectItem(2);
}

void FillResultBar(const SceneWindow& window, const SceneTexts& texts)
{
    window.FindControl(QStringLiteral("FilterEdit"))
        ->SetAttribute(QStringLiteral("placeholder"), texts.Text("Extras", "EXT0101"));
    Show(window, {"TargetChooser"}, true);
    window.FindControlAs<CComboUI>(QStringLiteral("TargetChooser"))
        ->SetTexts({texts.Message("MSG0203") + QStringLiteral(" 12 (FAT32, 29.71 GB)")}, 0);
    window.FindControl(QStringLiteral("OptHideDoubles"))->SetEnabled(true);
    SetTexts(window, {{"FilterCount", texts.Extra("EXT0102", {"12345", "123456"})},
                      {"OptHideDoubles", texts.Extra("EXT0103", {"12345"})}});
}

}  // namespace

QImage SamplePicture()
{
    QImage picture(320, 220, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, 220);
    sky.setColorAt(0, QColor(0x7F, 0xB6, 0xD9));
    sky.setColorAt(1, QColor(0xFB, 0xE9, 0xCF));
    painter.fillRect(picture.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0x5B, 0x7F, 0x6B));
    painter.drawEllipse(QRect(-80, 120, 300, 220));
    painter.setBrush(QColor(0x3C, 0x5F, 0x50));
    painter.drawEllipse(QRect(120, 140, 320, 240));
    return picture;
}

void SetTexts(const SceneWindow& window, const std::vector<std::pair<const char*, QString>>& texts)
{
    for (const auto& [name, text] : texts) {
        if (CControlUI* control = window.FindControl(QLatin1String(name))) {
            control->SetText(text);
        }
    }
}

void Show(const SceneWindow& window, std::initializer_list<const char*> names, bool isVisible)
{
    for (const char* name : names) {
        if (CControlUI* control = window.FindControl(QLatin1String(name))) {
            control->SetVisible(isVisible);
        }
    }
}

void FillStart(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    SetTexts(window, {{"TxtMainInfo", texts.Message(message)},
                      {"StopText", texts.Extra("EXT0120")},
                      {"StartText", texts.Extra("EXT0121")}});
}

void FillDrives(SceneWindow& window, const SceneTexts& texts, const QString&)
{
    SelectPage(window, {"TabScan", "#FF0089BE", "banner_bg.png", "scan_files.png", 1});
    SetTexts(window, {{"TabScan", texts.Message("MSG0503")},
                      {"Txt1", texts.Message("MSG0501")},
                      {"Txt2", texts.Message("MSG0502")}});
    window.FindControl(QStringLiteral("TabRecover"))->SetEnabled(false);
    window.FindControl(QStringLiteral("BtnAdvanceScan"))->SetEnabled(true);
    FillDisks(window, texts);
}

void FillCreateImage(SceneWindow& window, const SceneTexts& texts, const QString& message)
{
    FillDrives(window, texts, message);
    Show(window, {"BtnLoadImage", "BtnAdvanceScan", "BtnScan", "TabFileType", "TabRecover"}, false);
    Show(window, {"BtnCreateImage"}, true);
    window.FindControl(QStringLiteral("TabScan"))
        ->SetAttribute(QStringLiteral("foreimage"),
                       QStringLiteral("file='btn_create_image.png' dest='49,5,77,37'"));
    SetTexts(window, {{"TabScan", texts.Message("MSG0211")},
                      {"Txt1", texts.Message("MSG0212")},
                      {"Txt2", texts.Message("MSG0213")}});
}

void FillTypes(SceneWindow& window, const SceneTexts& texts, const QString&)
{
    SelectPage(window, {"TabFileType", "#FFE47100", "banner_bg2.png", "advance_scan.png", 2});
    Show(window, {"BtnLoadImage", "BtnAdvanceScan"}, false);
    window.FindControl(QStringLiteral("TabRecover"))->SetEnabled(false);
    SetTexts(window, {{"TabScan", texts.Message("MSG0503")},
                      {"Txt1", texts.Message("MSG0601")},
                      {"Txt2", texts.Message("MSG0602")}});
}

void FillResults(SceneWindow& window, const SceneTexts& texts, const QString&)
{
    SelectPage(window, {"TabRecover", "#FF316D1E", "banner_bg1.png", "recover_file.png", 3});
    Show(window, {"BtnLoadImage", "BtnAdvanceScan", "BtnScan"}, false);
    Show(window, {"BtnRecover", "SelectedFileInfo"}, true);
    window.FindControl(QStringLiteral("BtnRecover"))->SetEnabled(true);
    SetTexts(window, {{"TabScan", texts.Message("MSG0503")},
                      {"Txt1", texts.Message("MSG0801")},
                      {"Txt2", texts.Message("MSG0802", {"{f 7}{c #316D1E}123456{/c}{/f}"})},
                      {"SelectedFileInfo", texts.Message("MSG0804", {"999.99 GB", "123456"})}});
    FillResultBar(window, texts);
    FillTree(window, texts);
    FillFiles(window);
    window.FindControlAs<CRichEditUI>(QStringLiteral("PreviewEdit"))
        ->InsertPicture(SamplePicture(), -1, -1);
}
