#include "ui/custom/MenuWindow.h"

#include "texts/LanguageManager.h"
#include "ui/custom/CustomElements.h"
#include "ui/windows/MarkupBuilder.h"

#include <QCoreApplication>

#include <utility>

namespace {

const QLatin1String LanguageItem("item_language");
const QLatin1String ExitItem("item_exit");
const QLatin1String ChosenImage("file='point.png' source='0,0,16,16' dest='0,4,16,20'");

// What the markup of a menu is built into.
class MenuHolder : public CControlUI
{
public:
    QString GetClass() const override { return QStringLiteral("MenuHolder"); }
    bool Add(std::unique_ptr<CControlUI>& child) override
    {
        auto* added = dynamic_cast<CMenuUI*>(child.get());
        if (added == nullptr || menu) {
            return false;
        }
        (void)child.release();
        menu.reset(added);
        return true;
    }

    std::unique_ptr<CMenuUI> menu;
};

}  // namespace

CMenuWindow::CMenuWindow(MenuServices services, QString markup)
    : m_services(std::move(services)), m_markup(std::move(markup))
{
}

bool CMenuWindow::Init(CMenuElementUI* ownerElement, int x, int y, VisualControl& parentControl)
{
    if (ownerElement != nullptr) {
        m_menu = ownerElement->GetSubmenu();
    } else if (LoadMenu(parentControl)) {
        m_menu = m_ownMenu.get();
        OnNotification({QString(NotifyWindowInit), m_menu});
    }
    if (m_menu == nullptr) {
        return false;
    }
    // A chosen item is told after the menu was hidden: the object goes once that is over.
    connect(m_menu, &QMenu::aboutToHide, this, &QObject::deleteLater);
    m_menu->popup(QPoint(x, y));
    return true;
}

bool CMenuWindow::LoadMenu(VisualControl& parentControl)
{
    // Fonts are those of the window; a copy, for the menu's markup may add styles of its own.
    const auto skin = std::make_shared<Skin>(*parentControl.SharedSkin());
    MenuHolder holder;
    MarkupBuilder builder(skin, MakeMenuControl);
    const bool isBuilt = builder.Build(QStringLiteral("xml/") + m_markup, holder);
    m_problems = builder.Problems();
    if (!isBuilt || !holder.menu) {
        return false;
    }
    m_ownMenu = std::move(holder.menu);
    m_ownMenu->SetTarget(this);
    return true;
}

void CMenuWindow::OnNotification(const Notification& notification)
{
    if (notification.type == NotifyWindowInit) {
        OnWindowInit();
    } else if (notification.type == NotifyItemClick) {
        if (const auto* item = dynamic_cast<CMenuElementUI*>(notification.sender)) {
            OnItemClick(*item);
        }
    }
}

void CMenuWindow::OnWindowInit()
{
    if (m_services.languages == nullptr) {
        return;
    }
    for (const auto& [key, text] : m_services.languages->GetSection("MenuWnd").Entries()) {
        if (CControlUI* item = m_menu->FindControl(QString::fromStdString(key))) {
            item->SetText(QString::fromStdString(text));
        }
    }
    if (auto* item = FindControlAs<CMenuElementUI>(*m_menu, LanguageItem)) {
        AddLanguages(*item);
    }
}

void CMenuWindow::AddLanguages(CMenuElementUI& item) const
{
    for (const LanguageEntry& entry : m_services.languages->GetLanguages()) {
        auto language = std::make_unique<CMenuElementUI>();
        language->SetName(QString::fromStdString(entry.stem));
        language->SetText(QString::fromStdString(entry.menuText));
        if (entry.stem == m_services.languages->GetCurrentLanguage()) {
            language->SetAttribute(QStringLiteral("bkimage"), ChosenImage);
        }
        std::unique_ptr<CControlUI> child = std::move(language);
        item.Add(child);
    }
}

void CMenuWindow::OnItemClick(const CMenuElementUI& item) const
{
    // Looked at by its place first: a language file can be named like an item.
    const CMenuElementUI* owner = item.GetOwnerElement();
    if (owner != nullptr && owner->GetName() == LanguageItem) {
        // A choice that cannot be written down holds for this run.
        (void)m_services.languages->SetLanguage(item.GetName().toStdString());
        if (m_services.languageChanged) {
            m_services.languageChanged();
        }
    } else if (item.GetName() == ExitItem) {
        QMetaObject::invokeMethod(qApp, "quit", Qt::QueuedConnection);
    } else if (m_services.itemClicked) {
        m_services.itemClicked(item.GetName());
    }
}
