// A menu that opens at a place, and what its items do. What lies outside of this room is handed in by the owner.
#pragma once

#include "ui/custom/MenuUI.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

class LanguageManager;

struct MenuServices
{
    // The menu of languages is made of it; without one there is none.
    LanguageManager* languages = nullptr;
    // Another language was chosen, and its texts are loaded.
    std::function<void()> languageChanged;
    // Any item but languages and "item_exit", by name.
    std::function<void(const QString& item)> itemClicked;
};

// Made for one opening. It closes on Escape, on a click outside and when another window takes the focus, and then deletes
// itself; it is never deleted by others once Init() has succeeded.
class CMenuWindow : public QObject, public INotificationTarget
{
public:
    explicit CMenuWindow(MenuServices services, QString markup = QStringLiteral("menu_assist.xml"));

    // Opens at a place of the screen, moved so that all of it shows; parentControl says whose skin package is used. With an
    // owner element the submenu of that is opened. False when there is nothing to open.
    bool Init(CMenuElementUI* ownerElement, int x, int y, VisualControl& parentControl);
    // Null before.
    CMenuUI* GetMenu() const { return m_menu; }
    const QStringList& MarkupProblems() const { return m_problems; }

    void OnNotification(const Notification& notification) override;

private:
    bool LoadMenu(VisualControl& parentControl);
    void OnWindowInit();
    void AddLanguages(CMenuElementUI& item) const;
    void OnItemClick(const CMenuElementUI& item) const;

    MenuServices m_services;
    QString m_markup;
    QStringList m_problems;
    std::unique_ptr<CMenuUI> m_ownMenu;  // null for a submenu, which belongs to its element
    CMenuUI* m_menu = nullptr;
};
