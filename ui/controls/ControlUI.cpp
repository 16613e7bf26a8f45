#include "ui/controls/ControlUI.h"

#include "ui/markup/Skin.h"

#include <QObject>
#include <QTimerEvent>
#include <QWidget>

#include <utility>

// Runs the timers of one control, by the control's own numbers.
class ControlTimers : public QObject
{
public:
    explicit ControlTimers(CControlUI& control) : m_control(control) {}

    void Start(int id, int milliseconds)
    {
        Stop(id);
        m_running[startTimer(milliseconds)] = id;
    }
    void Stop(int id)
    {
        for (auto timer = m_running.begin(); timer != m_running.end(); ++timer) {
            if (timer->second == id) {
                killTimer(timer->first);
                m_running.erase(timer);
                return;
            }
        }
    }
    bool Has(int id) const
    {
        for (const auto& [timer, runningId] : m_running) {
            if (runningId == id) {
                return true;
            }
        }
        return false;
    }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        const auto timer = m_running.find(event->timerId());
        if (timer != m_running.end()) {
            // The control may go, and this with it: nothing is touched afterwards.
            m_control.OnTimer(timer->second);
        }
    }

private:
    CControlUI& m_control;
    std::map<int, int> m_running;
};

CControlUI::CControlUI() = default;

CControlUI::~CControlUI() = default;

void CControlUI::SetText(const QString&) {}

bool CControlUI::Add(std::unique_ptr<CControlUI>&)
{
    return false;
}

CControlUI* CControlUI::FindControl(const QString& name)
{
    std::vector<CControlUI*> waiting = {this};
    while (!waiting.empty()) {
        CControlUI* control = waiting.back();
        waiting.pop_back();
        if (control->GetName() == name) {
            return control;
        }
        for (int i = control->GetNamedCount(); i-- > 0;) {
            if (CControlUI* child = control->GetNamedAt(i)) {
                waiting.push_back(child);
            }
        }
    }
    return nullptr;
}

bool CControlUI::SetAttribute(const QString& name, const QString& value)
{
    if (!ReadAttribute(name, value)) {
        return false;
    }
    if (!m_attributes) {
        m_attributes = std::make_unique<std::map<QString, QString>>();
    }
    (*m_attributes)[name] = value;
    return true;
}

void CControlUI::ApplyAttributeList(const QString& attributes)
{
    for (const MarkupAttribute& attribute : ParseAttributeList(attributes)) {
        SetAttribute(attribute.name, attribute.value);
    }
}

void CControlUI::ApplyStyle(const QString& style)
{
    if (GetSkin() == nullptr) {
        return;
    }
    // A copy: setting an attribute must not depend on the skin staying as it is.
    const std::vector<MarkupAttribute> attributes = GetSkin()->Style(style);
    for (const MarkupAttribute& attribute : attributes) {
        SetAttribute(attribute.name, attribute.value);
    }
}

QString CControlUI::GetAttribute(const QString& name) const
{
    if (!m_attributes) {
        return {};
    }
    const auto found = m_attributes->find(name);
    return found == m_attributes->end() ? QString() : found->second;
}

bool CControlUI::ReadAttribute(const QString& name, const QString& value)
{
    static constexpr std::array<AttributeSetter<CControlUI>, 5> Table = {{
        {"name", [](CControlUI& control, const QString& text) { control.SetName(text); }},
        {"text", [](CControlUI& control, const QString& text) { control.SetText(text); }},
        {"userdata", [](CControlUI& control, const QString& text) { control.SetUserData(text); }},
        {"visible",
         [](CControlUI& control, const QString& text) { control.SetVisible(ParseTruth(text)); }},
        {"enabled",
         [](CControlUI& control, const QString& text) { control.SetEnabled(ParseTruth(text)); }},
    }};
    return SetFromTable(Table, *this, name, value);
}

void CControlUI::AddHandler(NotificationHandler handler)
{
    if (!m_handlers) {
        m_handlers = std::make_shared<std::vector<NotificationHandler>>();
    }
    m_handlers->push_back(std::move(handler));
}

void CControlUI::SendNotify(QLatin1String type, std::intptr_t wParam, std::intptr_t lParam)
{
    const Notification notification = {QString(type), this, wParam, lParam};
    INotificationTarget* target = FindTarget();
    // Kept while they run: a handler may remove the control.
    const auto handlers = m_handlers;
    const std::size_t count = handlers ? handlers->size() : 0;
    for (std::size_t i = 0; i < count; ++i) {
        const NotificationHandler handler = (*handlers)[i];
        if (handler(notification)) {
            return;
        }
    }
    if (target != nullptr) {
        target->OnNotification(notification);
    }
}

INotificationTarget* CControlUI::FindTarget()
{
    CControlUI* control = this;
    while (control->Widget() == nullptr) {
        control = control->GetParent();
        if (control == nullptr) {
            return nullptr;
        }
    }
    for (QWidget* widget = control->Widget(); widget != nullptr; widget = widget->parentWidget()) {
        if (auto* target = dynamic_cast<INotificationTarget*>(widget)) {
            return target;
        }
    }
    return nullptr;
}

void CControlUI::SetTimer(int id, int milliseconds)
{
    if (!m_timers) {
        m_timers = std::make_unique<ControlTimers>(*this);
    }
    m_timers->Start(id, milliseconds);
}

void CControlUI::KillTimer(int id)
{
    if (m_timers) {
        m_timers->Stop(id);
    }
}

bool CControlUI::HasTimer(int id) const
{
    return m_timers && m_timers->Has(id);
}

void CControlUI::OnTimer(int id)
{
    SendNotify(NotifyTimer, id);
}
