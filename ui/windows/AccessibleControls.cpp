#include "ui/windows/AccessibleControls.h"

#include "ui/controls/ButtonUI.h"
#include "ui/windows/WindowImplBase.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QAction>
#include <QApplication>
#include <QMenu>

namespace {

// One of several of which one is chosen, or one that is chosen by itself. Assistive software asks for it while the
// markup is still being read, so that what it is must be told when asked and not when it is made.
class AccessibleOption : public QAccessibleWidget
{
public:
    explicit AccessibleOption(COptionUI& option) : QAccessibleWidget(&option), m_option(option) {}

    QAccessible::Role role() const override
    {
        return IsOfGroup() ? QAccessible::RadioButton : QAccessible::CheckBox;
    }
    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = m_option.IsSelected();
        return state;
    }
    QStringList actionNames() const override
    {
        return QStringList(OwnAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override
    {
        if (name == OwnAction()) {
            m_option.Selected(IsOfGroup() || !m_option.IsSelected());
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    bool IsOfGroup() const { return !m_option.GetGroup().isEmpty(); }
    QString OwnAction() const { return IsOfGroup() ? pressAction() : toggleAction(); }

    COptionUI& m_option;
};

// A menu has no place in the tree of controls by itself: while it is open it hangs from the window that it was opened in.
class AccessibleWindow : public QAccessibleWidget
{
public:
    explicit AccessibleWindow(WindowImplBase& window)
        : QAccessibleWidget(&window,
                            window.IsDialog() ? QAccessible::Dialog : QAccessible::Window,
                            window.windowTitle())
    {
    }

    int childCount() const override
    {
        return QAccessibleWidget::childCount() + (OpenMenu() != nullptr ? 1 : 0);
    }
    QAccessibleInterface* child(int index) const override
    {
        QMenu* const menu = index == QAccessibleWidget::childCount() ? OpenMenu() : nullptr;
        return menu != nullptr ? QAccessible::queryAccessibleInterface(menu)
                               : QAccessibleWidget::child(index);
    }
    int indexOfChild(const QAccessibleInterface* child) const override
    {
        QMenu* const menu = OpenMenu();
        return menu != nullptr && child != nullptr && child->object() == menu
                   ? QAccessibleWidget::childCount()
                   : QAccessibleWidget::indexOfChild(child);
    }

private:
    QMenu* OpenMenu() const
    {
        if (!widget()->isActiveWindow()) {
            return nullptr;
        }
        for (QWidget* top : QApplication::topLevelWidgets()) {
            auto* const menu = qobject_cast<QMenu*>(top);
            // A submenu hangs from its item.
            if (menu != nullptr && menu->isVisible() &&
                menu->menuAction()->associatedObjects().isEmpty()) {
                return menu;
            }
        }
        return nullptr;
    }
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object)
{
    if (auto* window = dynamic_cast<WindowImplBase*>(object)) {
        return new AccessibleWindow(*window);
    }
    if (auto* option = dynamic_cast<COptionUI*>(object)) {
        return new AccessibleOption(*option);
    }
    return nullptr;
}

}  // namespace

void InstallAccessibleControls()
{
    // A second one of the same is not taken.
    QAccessible::installFactory(MakeInterface);
}
