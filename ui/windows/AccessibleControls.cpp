#include "ui/windows/AccessibleControls.h"

#include "ui/controls/ButtonUI.h"
#include "ui/windows/WindowImplBase.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace {

// One of several of which one is chosen.
class AccessibleGroupOption : public QAccessibleWidget
{
public:
    explicit AccessibleGroupOption(COptionUI& option)
        : QAccessibleWidget(&option, QAccessible::RadioButton), m_option(option)
    {
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
        return QStringList(pressAction()) + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& name) override
    {
        if (name == pressAction()) {
            m_option.Selected(true);
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    COptionUI& m_option;
};

QAccessibleInterface* MakeInterface(const QString&, QObject* object)
{
    if (auto* window = dynamic_cast<WindowImplBase*>(object)) {
        return new QAccessibleWidget(window,
                                     window->IsDialog() ? QAccessible::Dialog : QAccessible::Window,
                                     window->windowTitle());
    }
    auto* option = dynamic_cast<COptionUI*>(object);
    if (option != nullptr && !option->GetGroup().isEmpty()) {
        return new AccessibleGroupOption(*option);
    }
    return nullptr;
}

}  // namespace

void InstallAccessibleControls()
{
    // A second one of the same is not taken.
    QAccessible::installFactory(MakeInterface);
}
