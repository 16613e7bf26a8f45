#include "app/popups/PopUpWnd.h"

#include "app/popups/ModalStack.h"
#include "texts/LanguageManager.h"
#include "ui/controls/ButtonUI.h"

#include <QEventLoop>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QStringList>

#include <utility>

CPopUpWnd::CPopUpWnd(QString skinFile) : m_skinFile(std::move(skinFile))
{
    setWindowModality(Qt::ApplicationModal);
}

CPopUpWnd::~CPopUpWnd() = default;

void CPopUpWnd::SetMain(WindowImplBase* mainWnd, RecoveryState* state)
{
    m_mainWnd = mainWnd;
    m_state = state;
}

int CPopUpWnd::DoModal()
{
    QEventLoop loop;
    m_loop = &loop;
    ModalStack& stack = ModalStack::Instance();
    stack.Push(*this);
    if (!StaysHidden()) {
        ShowCentered();
    }
    if (m_code == 0) {
        loop.exec();
    }
    m_loop = nullptr;
    CloseWith(CloseCancelled);  // the program ends: the loop has gone without a code
    OnClosed();
    hide();
    for (const Posted& posted : std::exchange(m_posted, {})) {
        stack.PostWhenFree(*m_mainWnd, posted.number, posted.wParam, posted.lParam);
    }
    stack.Pop(*this);
    return m_code;
}

void CPopUpWnd::CloseWith(int code)
{
    int open = 0;
    if (m_code.compare_exchange_strong(open, code)) {
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (m_loop != nullptr) {
                    m_loop->quit();
                }
            },
            Qt::QueuedConnection);
    }
}

void CPopUpWnd::PostToMain(std::uint32_t number, std::intptr_t wParam, std::intptr_t lParam)
{
    const std::lock_guard held(m_postedLock);
    if (m_mainWnd != nullptr) {
        m_posted.push_back({number, wParam, lParam});
    }
}

void CPopUpWnd::ShowLater()
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_code == 0) {
                ShowCentered();
            }
        },
        Qt::QueuedConnection);
}

void CPopUpWnd::ShowCentered()
{
    Center();
    FocusAnswer();
    show();
    activateWindow();
}

QStringList CPopUpWnd::Answers() const
{
    return {QStringLiteral("FinishBtn"), QStringLiteral("okbtn"), QStringLiteral("cancelbtn"),
            QStringLiteral("CancelBtn")};
}

void CPopUpWnd::FocusAnswer() const
{
    for (const QString& name : Answers()) {
        auto* const button = FindControlAs<CButtonUI>(name);
        if (button != nullptr && !button->isHidden() && button->isEnabled()) {
            button->setFocus();
            return;
        }
    }
}

void CPopUpWnd::Center()
{
    const QWidget* const owner = parentWidget();
    const QRect around = owner != nullptr && owner->window()->isVisible()
                             ? owner->window()->geometry()
                             : screen()->availableGeometry();
    QRect place(QPoint(), size());
    place.moveCenter(around.center());
    move(place.topLeft());
}

void CPopUpWnd::Notify(const Notification& notification)
{
    if (notification.type == NotifyWindowInit) {
        m_messages = &LanguageManager::GetInstance().GetSection("Messages");
        OnWindowInit();
    }
    WindowImplBase::Notify(notification);
}

bool CPopUpWnd::MessageFilter(QKeyEvent& event)
{
    if (event.key() == Qt::Key_Escape) {
        OnDismiss();
        return true;
    }
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

// It goes when DoModal returns, and not before: a worker may write on it until then.
bool CPopUpWnd::OnCloseRequest()
{
    OnDismiss();
    return false;
}

void CPopUpWnd::ApplyLanguage(std::string_view sectionName) const
{
    WindowImplBase::ApplyLanguage(LanguageManager::GetInstance().GetSection(sectionName));
}

bool CPopUpWnd::IsAnyModal()
{
    return !ModalStack::Instance().IsEmpty();
}

QString CPopUpWnd::TextOf(std::string_view section, std::string_view key)
{
    return QString::fromStdString(LanguageManager::GetInstance().GetSection(section).Get(key));
}

void CPopUpWnd::SetPlainText(const QString& name, const QString& text) const
{
    CControlUI* const control = FindControl(name);
    if (control == nullptr) {
        return;
    }
    const auto* const drawn = dynamic_cast<const VisualControl*>(control);
    const bool hasMarkup = drawn != nullptr && drawn->Look().hasMarkup;
    control->SetText(hasMarkup ? PlainRun(text) : text);
}
