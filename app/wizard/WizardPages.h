// The four pages: which bars, buttons, texts and pictures belong to each, and which way leads back.
#pragma once

#include "ui/controls/ButtonUI.h"
#include "ui/controls/ContainerUI.h"
#include "ui/windows/WindowImplBase.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <initializer_list>

enum class WizardPage
{
    Mode,
    Disks,
    Types,
    Results
};

enum class WizardMode
{
    Recover,
    CreateImage
};

class WizardPages
{
public:
    // The window's controls are there.
    explicit WizardPages(WindowImplBase& window);

    // Asked when the texts of the page of results are written.
    std::function<std::size_t()> foundFiles;
    // What else is to be written then.
    std::function<void()> onResultTexts;

    WizardMode mode = WizardMode::Recover;
    bool cameFromTypes = false;  // the last scan was started on the page of types

    WizardPage Current() const { return static_cast<WizardPage>(m_pages->GetCurSel()); }
    // Shows the page with all that belongs to it; the option of its tab is not touched.
    void Enter(WizardPage page);
    // Through the option of its tab, which the window hears of. The page is entered also when the option is chosen already.
    void Choose(WizardPage page);
    // The page that a tab stands for; the page of modes for another control.
    WizardPage PageOf(const CControlUI& tab) const;
    // The page before the current one.
    void GoBack();
    // In the language that is chosen by now.
    void RewriteTexts();

private:
    void EnterModes();
    void EnterDisks();
    void EnterTypes();
    void EnterResults();
    void WriteStartTexts();
    void WriteDiskTab();
    void WriteDiskTexts();
    void WriteTypeTexts();
    void WriteResultTexts();
    void ShowBars();
    void ShowButtons(std::initializer_list<const char*> shown);
    void SetText(const char* name, const QString& text);
    void SetLook(const char* color, const char* banner, const char* logo);
    void SetVisible(std::initializer_list<const char*> names, bool isVisible);
    CControlUI* Find(const char* name) const;
    COptionUI* TabOf(WizardPage page) const;

    WindowImplBase& m_window;
    CTabLayoutUI* m_pages;
};
