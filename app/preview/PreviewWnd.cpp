#include "app/preview/PreviewWnd.h"

#include "app/popups/Messages.h"
#include "app/popups/PreviewProcessWnd.h"
#include "app/popups/RecoverProcessWnd.h"
#include "app/preview/PictureSteps.h"
#include "app/preview/PreviewPane.h"
#include "texts/LanguageManager.h"
#include "ui/controls/RichEditUI.h"

#include <utility>

CPreviewWnd::CPreviewWnd() : CPopUpWnd(QStringLiteral("PreviewWnd.xml")) {}

CPreviewWnd::~CPreviewWnd()
{
    // The players may be at theirs yet.
    if (!data.tempPath.empty() && !data.isPlayable) {
        std::error_code ignored;
        std::filesystem::remove(data.tempPath, ignored);
    }
}

std::filesystem::path CPreviewWnd::TakeTempPath()
{
    return std::exchange(data.tempPath, {});
}

void CPreviewWnd::InitWindow()
{
    m_edit = FindControlAs<CRichEditUI>(QStringLiteral("PreviewEdit"));
    if (!data.tempPath.empty()) {
        return;
    }
    for (const char* const name : {"PrevBar", "NextBar"}) {
        if (CControlUI* const bar = FindControl(QString::fromLatin1(name))) {
            bar->SetVisible(false);
        }
    }
}

void CPreviewWnd::OnWindowInit()
{
    // It has no texts of its own: its buttons say what others like them say.
    LanguageManager& languages = LanguageManager::GetInstance();
    const auto text = [&](const char* section, const char* key) {
        return QString::fromStdString(languages.GetSection(section).Get(key));
    };
    SetPlainText(QStringLiteral("RecoveryBtn"), text("MainWnd", "BtnRecover"));
    SetPlainText(QStringLiteral("CancelBtn"), text("RecoverProcessWnd", "FinishBtn"));
    if (!data.tempPath.empty() && siblings) {
        m_siblings = siblings();
    }
    ShowData();
}

void CPreviewWnd::ShowData()
{
    if (m_edit == nullptr) {
        return;
    }
    if (data.tempPath.empty()) {
        ShowDump(*m_edit, std::span(data.buffer).first(data.dataSize));
        return;
    }
    const std::string_view name = data.row.record.NameText();
    SetPlainText(QStringLiteral("FileName"),
                 QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    InsertPicture(m_edit, data.tempPath, QLatin1Char('\n') + DesktopText("DSK0206"));
}

bool CPreviewWnd::HandleMessage(std::uint32_t number, std::intptr_t, std::intptr_t)
{
    if (number != WM_SHOW_PREVIEW) {
        return false;
    }
    ShowData();
    return true;
}

void CPreviewWnd::OnClick(const Notification& notification)
{
    const QString& name = notification.sender->GetName();
    if (name == QLatin1String("CancelBtn") || name == QLatin1String("closebtn")) {
        CloseWith(CloseCancelled);
    } else if (name == QLatin1String("NextBtn") || name == QLatin1String("PrevBtn")) {
        Step(name == QLatin1String("NextBtn"));
    } else if (name == QLatin1String("RecoveryBtn")) {
        Recover();
    }
}

void CPreviewWnd::Step(bool isForward)
{
    const auto place = StepToPicture(m_siblings, data.row, isForward);
    if (!place) {
        return;
    }
    if (m_edit != nullptr) {
        m_edit->Clear();
    }
    CPreviewProcessWnd fetch;
    fetch.SetMain(m_mainWnd, m_state);
    fetch.previewWnd = this;
    fetch.record = &m_siblings[*place];
    if (fetch.Create(this, 370, 200) && fetch.DoModal() == CloseDone) {
        PostWindowMessage(WM_SHOW_PREVIEW);
    }
}

void CPreviewWnd::Recover()
{
    if (!askRestoreFolder || !askRestoreFolder(this)) {
        return;
    }
    CRecoverProcessWnd restore;
    restore.SetMain(m_mainWnd, m_state);
    restore.singleMode = true;
    restore.singleRecord = &data.row;
    if (restore.Create(this, 500, 200)) {
        restore.DoModal();
    }
}
