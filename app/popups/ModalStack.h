// Which window stands in front: the others hear nothing of mouse and keys, and cannot be closed. The toolkit's own modality does
// that for windows that are shown, and a popup can stay hidden for a while.
#pragma once

#include <QObject>
#include <QPointer>

#include <cstdint>
#include <vector>

class QWidget;
class WindowImplBase;

// User-interface thread.
class ModalStack : public QObject
{
public:
    static ModalStack& Instance();

    void Push(QWidget& window);
    void Pop(QWidget& window);
    bool IsEmpty() const { return m_windows.empty(); }
    // A part of another window that can be used all the same, as long as it is there.
    void Allow(QWidget& part) { m_allowed = &part; }
    // Handed to the window once none stands in front any more; dropped when it has gone by then.
    void PostWhenFree(WindowImplBase& window,
                      std::uint32_t number,
                      std::intptr_t wParam,
                      std::intptr_t lParam);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Posted
    {
        QPointer<WindowImplBase> window;
        std::uint32_t number = 0;
        std::intptr_t wParam = 0;
        std::intptr_t lParam = 0;
    };

    void Deliver();
    void AskForDelivery();
    bool CanBeUsed(const QWidget& widget) const;

    std::vector<QWidget*> m_windows;  // the last one stands in front
    QPointer<QWidget> m_allowed;
    std::vector<Posted> m_posted;
};
