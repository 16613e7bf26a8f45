// What every control of a window has, be it a widget, a row of a list or a node of a tree: a name, a text, marks of its owner,
// children, attributes and timers. User-interface thread.
#pragma once

#include "ui/controls/Notification.h"

#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <vector>

class QWidget;
class Skin;
class ControlTimers;

// One line of a control's table of attributes.
template <typename Control>
struct AttributeSetter
{
    const char* name;
    void (*set)(Control& control, const QString& value);
};

// Returns true from a handler to keep the notification from the window.
using NotificationHandler = std::function<bool(const Notification&)>;

class CControlUI
{
public:
    CControlUI();
    CControlUI(const CControlUI&) = delete;
    CControlUI& operator=(const CControlUI&) = delete;
    virtual ~CControlUI();

    // Such as "ButtonUI".
    virtual QString GetClass() const = 0;

    const QString& GetName() const { return m_name; }
    virtual void SetName(const QString& name) { m_name = name; }
    // As it was set, markup included.
    virtual QString GetText() const { return {}; }
    virtual void SetText(const QString& text);
    const QString& GetUserData() const { return m_userData; }
    void SetUserData(const QString& userData) { m_userData = userData; }
    // Belongs to whoever uses the control; a pointer mostly.
    std::intptr_t GetTag() const { return m_tag; }
    void SetTag(std::intptr_t tag) { m_tag = tag; }
    // Its own state: one that is visible shows only when what it lies in does.
    virtual bool IsVisible() const { return m_isVisible; }
    virtual void SetVisible(bool isVisible) { m_isVisible = isVisible; }
    virtual bool IsEnabled() const { return m_isEnabled; }
    virtual void SetEnabled(bool isEnabled) { m_isEnabled = isEnabled; }
    // Draws anew.
    virtual void Invalidate() {}
    // Null for what is drawn by another control.
    virtual QWidget* Widget() const { return nullptr; }
    virtual CControlUI* GetParent() const { return nullptr; }
    // What it is drawn with; null before it is part of a window.
    virtual const Skin* GetSkin() const { return nullptr; }

    // Children, in order; a null pointer outside.
    virtual int GetCount() const { return 0; }
    virtual CControlUI* GetItemAt(int) const { return nullptr; }
    // Takes a child; false, and the child is left to the caller, when it cannot hold such a one.
    virtual bool Add(std::unique_ptr<CControlUI>& child);
    // Those in which a name is looked for: not the rows of a list, which can be a hundred thousand.
    virtual int GetNamedCount() const { return GetCount(); }
    virtual CControlUI* GetNamedAt(int index) const { return GetItemAt(index); }
    // The first of that name, itself and what lies below it, in document order; null when there is none.
    CControlUI* FindControl(const QString& name);

    // False when the control has no such attribute.
    bool SetAttribute(const QString& name, const QString& value);
    // width="32" textcolor='#FF505050'
    void ApplyAttributeList(const QString& attributes);
    // The attributes of a style of the window; does nothing before the control is part of one.
    void ApplyStyle(const QString& style);
    // As it was last set by SetAttribute(); empty otherwise.
    QString GetAttribute(const QString& name) const;
    // The markup's element has ended: all attributes and children are there.
    virtual void OnBuilt() {}

    // Called before the window; the first that returns true ends it.
    void AddHandler(NotificationHandler handler);
    // The control may be gone when it returns.
    void SendNotify(QLatin1String type, std::intptr_t wParam = 0, std::intptr_t lParam = 0);

    // Fires again and again until it is stopped. One that runs already begins anew.
    void SetTimer(int id, int milliseconds);
    void KillTimer(int id);
    bool HasTimer(int id) const;
    // Sends "timer" with the number.
    virtual void OnTimer(int id);

protected:
    // The control's own attributes; calls its base for others.
    virtual bool ReadAttribute(const QString& name, const QString& value);
    virtual INotificationTarget* FindTarget();

private:
    QString m_name;
    QString m_userData;
    std::intptr_t m_tag = 0;
    bool m_isVisible = true;
    bool m_isEnabled = true;
    std::unique_ptr<std::map<QString, QString>> m_attributes;
    std::shared_ptr<std::vector<NotificationHandler>> m_handlers;
    std::unique_ptr<ControlTimers> m_timers;
};

template <typename Control, std::size_t Count>
bool SetFromTable(const std::array<AttributeSetter<Control>, Count>& table,
                  Control& control,
                  const QString& name,
                  const QString& value)
{
    for (const AttributeSetter<Control>& setter : table) {
        if (name == QLatin1String(setter.name)) {
            setter.set(control, value);
            return true;
        }
    }
    return false;
}

// The control of a kind with that name, or null.
template <typename Control>
Control* FindControlAs(CControlUI& root, const QString& name)
{
    return dynamic_cast<Control*>(root.FindControl(name));
}
