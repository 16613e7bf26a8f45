// The base of all windows that stand in front of the main window until they are closed with a code.
#pragma once

#include "app/tasks/CloseCode.h"
#include "app/tasks/RecoveryState.h"
#include "ui/windows/WindowImplBase.h"

#include <atomic>
#include <mutex>
#include <string_view>
#include <vector>

class LanguageSection;
class QEventLoop;

// User-interface thread, but for CloseWith(), PostToMain() and ShowLater().
class CPopUpWnd : public WindowImplBase
{
public:
    // The name of its markup file, without the folder.
    explicit CPopUpWnd(QString skinFile);
    CPopUpWnd(const CPopUpWnd&) = delete;
    CPopUpWnd& operator=(const CPopUpWnd&) = delete;
    ~CPopUpWnd() override;

    // Before Create. Both may be null where a window needs neither.
    void SetMain(WindowImplBase* mainWnd, RecoveryState* state);
    // Shows the window, unless it shows itself later, and returns when it was closed: the first code that it was closed with.
    // Nothing else of the program can be used meanwhile.
    int DoModal();
    // From any thread; the first code counts.
    void CloseWith(int code);
    // Told to the main window when no DoModal is running any more. From any thread.
    void PostToMain(std::uint32_t number, std::intptr_t wParam = 0, std::intptr_t lParam = 0);
    // From any thread: for a window that stays hidden at first.
    void ShowLater();
    // Deletes the window.
    void Release() { delete this; }

    QString GetWindowClassName() const override { return QStringLiteral("UIPopUpWnd"); }
    QString GetSkinFolder() const override { return QStringLiteral("Skins\\"); }
    QString GetSkinFile() const override { return QStringLiteral("xml\\") + m_skinFile; }
    bool IsDialog() const override { return true; }
    void Notify(const Notification& notification) override;
    bool MessageFilter(QKeyEvent& event) override;
    bool OnCloseRequest() override;

    // Puts the texts of that section onto the controls.
    void ApplyLanguage(std::string_view sectionName) const;
    // Closed with a code, if DoModal has not returned yet.
    bool IsClosing() const { return m_code != 0; }
    // True while any window of this kind keeps the others from being used.
    static bool IsAnyModal();

protected:
    // The controls are there; the base does nothing.
    virtual void OnWindowInit() {}
    // The user wants it gone by Escape or by the window manager: closes with CloseCancelled.
    virtual void OnDismiss() { CloseWith(CloseCancelled); }
    // What is to be done before DoModal returns, with the window closed.
    virtual void OnClosed() {}
    virtual bool StaysHidden() const { return false; }
    void ShowCentered();
    // The buttons that may have the focus at first, the best one first.
    virtual QStringList Answers() const;
    // Where the user's next key goes: not to the cross of the title, which comes first in the window.
    void FocusAnswer() const;

    void Center();
    static QString TextOf(std::string_view section, std::string_view key);
    // Of the sections "Messages", "Desktop" and "Extras".
    static QString Message(std::string_view key) { return TextOf("Messages", key); }
    static QString DesktopText(std::string_view key) { return TextOf("Desktop", key); }
    static QString ExtraText(std::string_view key) { return TextOf("Extras", key); }
    // Never read as markup, whatever the control makes of its texts.
    void SetPlainText(const QString& name, const QString& text) const;

    WindowImplBase* m_mainWnd = nullptr;
    RecoveryState* m_state = nullptr;
    LanguageSection* m_messages = nullptr;  // the section "Messages", from OnWindowInit on

private:
    struct Posted
    {
        std::uint32_t number = 0;
        std::intptr_t wParam = 0;
        std::intptr_t lParam = 0;
    };

    QString m_skinFile;
    QEventLoop* m_loop = nullptr;
    std::atomic<int> m_code = 0;  // 0: not closed
    std::mutex m_postedLock;
    std::vector<Posted> m_posted;
};
