#include "app/wizard/AssistMenu.h"

#include "app/popups/Messages.h"
#include "texts/LanguageManager.h"
#include "ui/custom/MenuWindow.h"
#include "ui/windows/WindowImplBase.h"

namespace {

struct MenuMessage
{
    std::uint32_t number;
    const char* item;
};

constexpr MenuMessage Items[] = {
    {0x464, "item_help"}, {0x465, "item_faq"}, {0x468, "item_about"}, {0x469, "item_support"}};

}  // namespace

QString MenuItemOf(std::uint32_t message)
{
    for (const MenuMessage& item : Items) {
        if (item.number == message) {
            return QLatin1String(item.item);
        }
    }
    return {};
}

void ShowAssistMenu(WindowImplBase& window)
{
    auto* button = dynamic_cast<VisualControl*>(window.FindControl(QStringLiteral("BtnAssist")));
    if (button == nullptr) {
        return;
    }
    MenuServices services;
    services.languages = &LanguageManager::GetInstance();
    services.languageChanged = [&window] { window.PostWindowMessage(WM_LANGUAGE_CHANGED); };
    services.itemClicked = [&window](const QString& name) {
        for (const MenuMessage& item : Items) {
            if (name == QLatin1String(item.item)) {
                window.PostWindowMessage(item.number);
            }
        }
    };
    const QWidget& widget = *button->Widget();
    const QPoint below = widget.mapToGlobal(QPoint(0, widget.height()));
    // Deletes itself once it is open.
    auto menu = std::make_unique<CMenuWindow>(std::move(services));
    if (menu->Init(nullptr, below.x(), below.y(), *button)) {
        (void)menu.release();
    }
}
