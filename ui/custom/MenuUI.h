// A menu and its items. Qt opens and closes them and hears the keys; the skin draws.
#pragma once

#include "ui/controls/VisualControl.h"
#include "ui/list/RowLook.h"

#include <QMenu>

#include <memory>
#include <vector>

class CMenuUI;

// Sends "itemclick". With items of its own it opens a submenu instead.
class CMenuElementUI : public CControlUI
{
public:
    CMenuElementUI() = default;
    QString GetClass() const override { return QStringLiteral("MenuElementUI"); }

    QString GetText() const override { return m_text; }
    void SetText(const QString& text) override;
    void SetVisible(bool isVisible) override;
    void SetEnabled(bool isEnabled) override;
    void Invalidate() override;
    CControlUI* GetParent() const override;
    const Skin* GetSkin() const override;

    // The items of the submenu.
    int GetCount() const override;
    CControlUI* GetItemAt(int index) const override;
    bool Add(std::unique_ptr<CControlUI>& child) override;
    // Null without items.
    CMenuUI* GetSubmenu() const { return m_submenu; }
    // The item that the submenu which it lies in hangs from; null for one of the first level.
    CMenuElementUI* GetOwnerElement() const;
    // Null before it lies in a menu.
    QAction* Action() const { return m_action; }

    void Draw(QPainter& painter, const QRect& area, const RowLook& look, bool isHot) const;
    int ContentWidth(const RowLook& look) const;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    INotificationTarget* FindTarget() override;

private:
    friend class CMenuUI;

    CMenuUI* m_parent = nullptr;
    CMenuUI* m_submenu = nullptr;  // a child of the parent's widget
    QAction* m_action = nullptr;   // of the parent's widget
    QString m_text;
    ControlLook m_look;
};

class CMenuUI : public WidgetControl<QMenu>
{
public:
    explicit CMenuUI(std::shared_ptr<Skin> skin);
    QString GetClass() const override { return QStringLiteral("MenuUI"); }

    int GetCount() const override { return static_cast<int>(m_elements.size()); }
    CMenuElementUI* GetItemAt(int index) const override;
    bool Add(std::unique_ptr<CControlUI>& child) override;

    // Where notifications of the whole tree of menus go.
    void SetTarget(INotificationTarget* target) { m_target = target; }
    INotificationTarget* GetTarget() const { return m_target; }
    CMenuElementUI* GetOwnerElement() const { return m_owner; }
    const RowLook& ItemsLook() const { return m_rowLook; }
    QSize ItemSize() const;

protected:
    bool ReadAttribute(const QString& name, const QString& value) override;
    void paintEvent(QPaintEvent* event) override;
    INotificationTarget* FindTarget() override { return m_target; }

private:
    friend class CMenuElementUI;

    std::vector<std::unique_ptr<CMenuElementUI>> m_elements;
    RowLook m_rowLook;
    INotificationTarget* m_target = nullptr;
    CMenuElementUI* m_owner = nullptr;  // of a submenu
};
