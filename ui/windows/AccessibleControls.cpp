#include "ui/windows/AccessibleControls.h"

#include "ui/controls/ButtonUI.h"
#include "ui/windows/WindowImplBase.h"

#include <QAccessible>
#include <QAccessibleWidget>

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

QAccessibleInterface* MakeInterface(const QString&, QObject* object)
{
    if (auto* window = dynamic_cast<WindowImplBase*>(object)) {
        return new QAccessibleWidget(window,
                                     window->IsDialog() ? QAccessible::Dialog : QAccessible::Window,
                                     window->windowTitle());
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
