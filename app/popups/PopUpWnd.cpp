#include "app/popups/PopUpWnd.h"

#include "texts/LanguageManager.h"

#include <QEventLoop>
#include <QKeyEvent>

#include <utility>

CPopUpWnd::CPopUpWnd(QString skinFile) : m_skinFile(std::move(skinFile)) {}

CPopUpWnd::~CPopUpWnd() = default;

void CPopUpWnd::SetMain(WindowImplBase* mainWnd, RecoveryState* state)
{
    m_mainWnd = mainWnd;
    m_state = state;
}

int CPopUpWnd::DoModal()
{
    return CloseCancelled;
}

void CPopUpWnd::CloseWith(int) {}
void CPopUpWnd::PostToMain(std::uint32_t, std::intptr_t, std::intptr_t) {}
void CPopUpWnd::ShowLater() {}
void CPopUpWnd::ShowCentered() {}

void CPopUpWnd::Notify(const Notification& notification)
{
    WindowImplBase::Notify(notification);
}

void CPopUpWnd::OnClick(const Notification& notification)
{
    WindowImplBase::OnClick(notification);
}

bool CPopUpWnd::MessageFilter(QKeyEvent&)
{
    return true;
}

bool CPopUpWnd::OnCloseRequest()
{
    return true;
}

void CPopUpWnd::ApplyLanguage(std::string_view) const {}

bool CPopUpWnd::IsAnyModal()
{
    return false;
}

std::string CPopUpWnd::Message(std::string_view key) const
{
    return m_messages != nullptr ? m_messages->Get(key) : std::string();
}

std::string CPopUpWnd::DesktopText(std::string_view key)
{
    return LanguageManager::GetInstance().GetSection("Desktop").Get(key);
}
