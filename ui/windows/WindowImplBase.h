// The base of every window: made from a markup file, it finds its controls by name and hears of what happens to them.
//
// User-interface thread, but for PostWindowMessage(). A derived class overrides what it needs; keys reach the control that has
// the focus first, and the window only when that does not use them.
#pragma once

#include "ui/controls/ContainerUI.h"
#include "ui/windows/MarkupBuilder.h"

#include <QWidget>

#include <cstdint>
#include <memory>

class LanguageSection;
class QKeyEvent;

class WindowImplBase : public QWidget, public INotificationTarget
{
public:
    WindowImplBase();

    virtual QString GetWindowClassName() const = 0;
    // Name of the markup file in the package, such as "xml\skin.xml".
    virtual QString GetSkinFile() const = 0;
    // A folder beside the program; when the markup file is in it, its files stand in for the package.
    virtual QString GetSkinFolder() const { return {}; }
    // Read out as a dialog, not as a main window.
    virtual bool IsDialog() const { return false; }

    // Makes the controls and the window, hidden, then calls InitWindow() and sends "windowinit". A size of 0 is the markup's.
    // False, and there is nothing to show, when the markup cannot be read.
    bool Create(QWidget* owner, int width = 0, int height = 0);
    // Once the controls are there.
    virtual void InitWindow() {}
    // After the window was closed, when nothing of it is running any more. It may delete the object.
    virtual void OnFinalMessage() {}
    // Messages by number, posted from any thread. True when it was one that the window knows.
    virtual bool HandleMessage(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam);
    // All notifications come here. The base hands "click" to OnClick().
    virtual void Notify(const Notification& notification);
    // The base closes on "closebtn", minimizes on "minbtn" and changes between full and own size on "maxbtn".
    virtual void OnClick(const Notification& notification);
    // A key that no control has used. True when the window has used it.
    virtual bool MessageFilter(QKeyEvent& event);
    // Whether the window may be closed now, by whatever means. A window with a running task asks there, and answers false.
    virtual bool OnCloseRequest() { return true; }

    // Null when there is none of that name.
    CControlUI* FindControl(const QString& name) const;
    template <typename Control>
    Control* FindControlAs(const QString& name) const
    {
        return dynamic_cast<Control*>(FindControl(name));
    }
    CContainerUI& Root() const { return *m_root; }
    const std::shared_ptr<Skin>& GetSkin() const { return m_skin; }
    const QStringList& MarkupProblems() const { return m_problems; }

    // As if the control had sent it.
    void SendNotify(CControlUI& sender,
                    QLatin1String type,
                    std::intptr_t wParam = 0,
                    std::intptr_t lParam = 0);
    // May be called from any thread, as long as the window is there.
    void
    PostWindowMessage(std::uint32_t number, std::intptr_t wParam = 0, std::intptr_t lParam = 0);
    // Gives each control that a key of the section names that text.
    void ApplyLanguage(const LanguageSection& section) const;

    // Of all windows that are made from then on; null for the program's own.
    static void UsePackage(std::shared_ptr<SkinPackage> package);

    void OnNotification(const Notification& notification) override { Notify(notification); }

protected:
    // For elements that are not plain ones.
    virtual std::unique_ptr<CControlUI> CreateControl(const QString& element,
                                                      const std::shared_ptr<Skin>& skin);

    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    std::shared_ptr<SkinPackage> FindPackage() const;
    Qt::Edges EdgesAt(const QPoint& place) const;
    bool IsResizable() const;
    void ToggleMaximized();

    std::shared_ptr<Skin> m_skin;
    CContainerUI* m_root = nullptr;  // a child of the widget
    WindowSettings m_settings;
    QStringList m_problems;
};
