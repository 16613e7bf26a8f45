#include "app/wizard/WizardPages.h"

#include "app/wizard/MainTexts.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array ActionButtons = {"BtnAdvanceScan", "BtnScan", "BtnCreateImage", "BtnRecover"};
constexpr std::array Tabs = {"", "TabScan", "TabFileType", "TabRecover"};

}  // namespace

WizardPages::WizardPages(WindowImplBase& window)
    : m_window(window), m_pages(window.FindControlAs<CTabLayoutUI>(QStringLiteral("TabPage")))
{
    WriteStartTexts();
}

CControlUI* WizardPages::Find(const char* name) const
{
    return m_window.FindControl(QLatin1String(name));
}

void WizardPages::SetText(const char* name, const QString& text)
{
    Find(name)->SetText(text);
}

void WizardPages::SetVisible(std::initializer_list<const char*> names, bool isVisible)
{
    for (const char* name : names) {
        Find(name)->SetVisible(isVisible);
    }
}

void WizardPages::ShowButtons(std::initializer_list<const char*> shown)
{
    for (const char* name : ActionButtons) {
        Find(name)->SetVisible(std::find_if(shown.begin(), shown.end(), [name](const char* one) {
                                   return QLatin1String(one) == QLatin1String(name);
                               }) != shown.end());
    }
}

COptionUI* WizardPages::TabOf(WizardPage page) const
{
    return m_window.FindControlAs<COptionUI>(
        QLatin1String(Tabs.at(static_cast<std::size_t>(page))));
}

WizardPage WizardPages::PageOf(const CControlUI& tab) const
{
    for (const WizardPage page : {WizardPage::Disks, WizardPage::Types, WizardPage::Results}) {
        if (TabOf(page) == &tab) {
            return page;
        }
    }
    return WizardPage::Mode;
}

void WizardPages::Choose(WizardPage page)
{
    COptionUI* tab = TabOf(page);
    if (tab->IsSelected()) {
        Enter(page);
    } else {
        tab->Selected(true);
    }
}

void WizardPages::GoBack()
{
    int target = static_cast<int>(Current()) - 1;
    if (target < 0) {
        return;
    }
    if (target == static_cast<int>(WizardPage::Types) && !cameFromTypes) {
        --target;
    }
    if (target == 0) {
        Enter(WizardPage::Mode);
    } else {
        Choose(static_cast<WizardPage>(target));
    }
}

void WizardPages::Enter(WizardPage page)
{
    switch (page) {
    case WizardPage::Mode:
        EnterModes();
        break;
    case WizardPage::Disks:
        EnterDisks();
        break;
    case WizardPage::Types:
        EnterTypes();
        break;
    case WizardPage::Results:
        EnterResults();
        break;
    }
    m_pages->SelectItem(static_cast<int>(page));
}

void WizardPages::WriteStartTexts()
{
    SetText("StopText", ToQt(ExtraText("EXT0120")));
    SetText("StartText", ToQt(ExtraText("EXT0121")));
}

void WizardPages::RewriteTexts()
{
    WriteStartTexts();
    WriteDiskTab();
    switch (Current()) {
    case WizardPage::Mode:
        break;
    case WizardPage::Disks:
        WriteDiskTexts();
        break;
    case WizardPage::Types:
        WriteTypeTexts();
        break;
    case WizardPage::Results:
        WriteResultTexts();
        break;
    }
}

void WizardPages::SetLook(const char* color, const char* banner, const char* logo)
{
    Find("Txt1")->SetAttribute(QStringLiteral("textcolor"), QLatin1String(color));
    Find("ToolBar2")
        ->SetAttribute(QStringLiteral("bkimage"),
                       QStringLiteral("file='%1' corner='0,0,0,70'").arg(QLatin1String(banner)));
    Find("ToolBar2Logo")
        ->SetAttribute(QStringLiteral("bkimage"),
                       QStringLiteral("file='%1' dest='15,5,65,55'").arg(QLatin1String(logo)));
}

void WizardPages::ShowBars()
{
    SetVisible({"ToolBar2", "ToolBar3", "ToolBtn", "SubBar2", "Txt1", "Txt2"}, true);
    SetVisible({"SubBar1"}, false);
}

void WizardPages::EnterModes()
{
    SetVisible({"ToolBar2", "ToolBar3", "ToolBtn", "SubBar2", "Txt1", "Txt2"}, false);
    SetVisible({"SubBar1"}, true);
}

void WizardPages::EnterDisks()
{
    const bool recovers = mode == WizardMode::Recover;
    SetVisible({"BtnLoadImage", "TabFileType", "TabRecover"}, recovers);
    if (recovers) {
        ShowButtons({"BtnAdvanceScan", "BtnScan"});
    } else {
        ShowButtons({"BtnCreateImage"});
    }
    Find("TabScan")->SetAttribute(
        QStringLiteral("foreimage"),
        recovers ? QStringLiteral("file='btn_scan.png' dest='49,5,81,37'")
                 : QStringLiteral("file='btn_create_image.png' dest='49,5,77,37'"));
    WriteDiskTexts();
    ShowBars();
    SetVisible({"SelectedFileInfo"}, false);
    SetLook("#FF0089BE", "banner_bg.png", "scan_files.png");
}

void WizardPages::WriteDiskTab()
{
    SetText("TabScan", ToQt(MessageText(mode == WizardMode::Recover ? "MSG0503" : "MSG0211")));
}

void WizardPages::WriteDiskTexts()
{
    const bool recovers = mode == WizardMode::Recover;
    WriteDiskTab();
    SetText("Txt1", ToQt(MessageText(recovers ? "MSG0501" : "MSG0212")));
    SetText("Txt2", ToQt(MessageText(recovers ? "MSG0502" : "MSG0213")));
}

void WizardPages::EnterTypes()
{
    ShowButtons({"BtnScan"});
    WriteTypeTexts();
    SetVisible({"SelectedFileInfo"}, false);
    SetLook("#FFE47100", "banner_bg2.png", "advance_scan.png");
}

void WizardPages::WriteTypeTexts()
{
    SetText("Txt1", ToQt(MessageText("MSG0601")));
    SetText("Txt2", ToQt(MessageText("MSG0602")));
}

void WizardPages::EnterResults()
{
    ShowButtons({"BtnRecover"});
    WriteResultTexts();
    SetVisible({"SelectedFileInfo"}, true);
    SetLook("#FF316D1E", "banner_bg1.png", "recover_file.png");
}

void WizardPages::WriteResultTexts()
{
    const std::string count = FormatText("{f 7}{c #316D1E}%d{/c}{/f}", foundFiles());
    SetText("Txt1", ToQt(MessageText("MSG0801")));
    SetText("Txt2", ToQt(FormatText(MessageText("MSG0802"), count)));
    onResultTexts();
}
