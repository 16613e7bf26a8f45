#include "app/popups/ModalStack.h"

#include "ui/windows/WindowImplBase.h"

#include <QApplication>
#include <QEvent>

#include <algorithm>
#include <utility>

namespace {

bool IsOfUser(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::DragEnter:
    case QEvent::Drop:
    case QEvent::Close:
        return true;
    default:
        return false;
    }
}

bool LiesIn(const QWidget& widget, const QWidget* part)
{
    for (const QWidget* at = &widget; at != nullptr && part != nullptr; at = at->parentWidget()) {
        if (at == part) {
            return true;
        }
    }
    return false;
}

}  // namespace

ModalStack& ModalStack::Instance()
{
    static ModalStack stack;
    return stack;
}

void ModalStack::Push(QWidget& window)
{
    if (m_windows.empty()) {
        qApp->installEventFilter(this);
    }
    m_windows.push_back(&window);
}

void ModalStack::Pop(QWidget& window)
{
    m_windows.erase(std::remove(m_windows.begin(), m_windows.end(), &window), m_windows.end());
    if (m_windows.empty()) {
        qApp->removeEventFilter(this);
        AskForDelivery();
    }
}

void ModalStack::PostWhenFree(WindowImplBase& window,
                              std::uint32_t number,
                              std::intptr_t wParam,
                              std::intptr_t lParam)
{
    m_posted.push_back({&window, number, wParam, lParam});
    AskForDelivery();
}

void ModalStack::AskForDelivery()
{
    if (!m_posted.empty()) {
        QMetaObject::invokeMethod(
            this, [this] { Deliver(); }, Qt::QueuedConnection);
    }
}

void ModalStack::Deliver()
{
    // What is told may open the next window, and the rest waits for that one then.
    while (m_windows.empty() && !m_posted.empty()) {
        const Posted posted = m_posted.front();
        m_posted.erase(m_posted.begin());
        if (posted.window) {
            posted.window->HandleMessage(posted.number, posted.wParam, posted.lParam);
        }
    }
}

bool ModalStack::CanBeUsed(const QWidget& widget) const
{
    // The list of names below a field of a file dialog is a window without a parent; its keys are the field's.
    const QWidget* const helped = widget.window()->focusProxy();
    return LiesIn(widget, m_windows.back()) || LiesIn(widget, m_allowed) ||
           (helped != nullptr && LiesIn(*helped, m_windows.back()));
}

bool ModalStack::eventFilter(QObject* watched, QEvent* event)
{
    if (m_windows.empty() || !watched->isWidgetType() || !IsOfUser(event->type()) ||
        CanBeUsed(*static_cast<QWidget*>(watched))) {
        return false;
    }
    event->ignore();
    return true;
}
