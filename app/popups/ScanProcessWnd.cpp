#include "app/popups/ScanProcessWnd.h"

#include "app/online/FirstUse.h"
#include "app/online/OnlineConfig.h"
#include "app/popups/Messages.h"
#include "app/popups/ModalStack.h"
#include "app/popups/OpeningWait.h"
#include "app/tasks/ScanWorker.h"
#include "texts/LanguageManager.h"

#include <algorithm>
#include <utility>

namespace {

constexpr TaskLook ScanLook = {TaskKind::Scan, "ScanProcessWnd.xml", "ScanWnd", "MSG0709", 130};
constexpr int WaitDelay = 300;  // milliseconds
constexpr int StripDelay = 300;
constexpr std::size_t StripCells = 128;

bool NeedsRights(const RecoveryTarget* target)
{
    return !target->IsImage() && !target->volume->disk.readable;
}

}  // namespace

CScanProcessWnd::CScanProcessWnd()
    : CTaskWnd(ScanLook), m_firstUse(PingOnFirstUse(std::string(MakerSite()), FirstUseMarker()))
{
}

CScanProcessWnd::~CScanProcessWnd()
{
    if (m_firstUse.joinable()) {
        m_firstUse.join();
    }
    StopWorker();
    HideWait();
}

void CScanProcessWnd::OnTaskInit()
{
    if (CControlUI* const strip = FindControl(QStringLiteral("strip"))) {
        strip->Widget()->setToolTip(ExtraText("EXT0271"));
    }
    connect(&m_stripTimer, &QTimer::timeout, this, [this] { DrawStrip(); });
    m_stripTimer.start(StripDelay);
}

// The scan only sets marks; it is not asked for anything.
void CScanProcessWnd::DrawStrip()
{
    CControlUI* const strip = FindControl(QStringLiteral("strip"));
    if (strip != nullptr && isVisible() && m_strip) {
        strip->SetText(QString::fromStdString(m_strip(StripCells)));
    }
}

void CScanProcessWnd::RunTask(const TaskContext& context)
{
    TaskContext own = context;
    own.host.postDone = [this] { PostToMain(WM_SCAN_DONE); };
    if (std::any_of(targets.begin(), targets.end(), &NeedsRights)) {
        Session::AskForRights();
    }
    ScanWorker worker(own, m_state->session);
    worker.targets = targets;
    worker.engineMode = engineMode;
    worker.depth = depth;
    worker.onTarget = [this](std::function<std::string(std::size_t)> strip) {
        QMetaObject::invokeMethod(
            this, [this, strip = std::move(strip)] { m_strip = strip; }, Qt::QueuedConnection);
    };
    worker.Run();
    outcomes = worker.outcomes;
    refusal = worker.refusal;
}

void CScanProcessWnd::OnOpening(bool isOpening)
{
    m_isOpening = isOpening;
    if (!isOpening) {
        HideWait();
        return;
    }
    QTimer::singleShot(WaitDelay, this, [this] {
        if (m_isOpening && !isVisible() && !IsClosing()) {
            ShowWait();
        }
    });
}

void CScanProcessWnd::ShowWait()
{
    if (m_mainWnd == nullptr || m_wait) {
        return;
    }
    const std::string cancel =
        LanguageManager::GetInstance().GetSection("MessageBox").Get("cancelbtn");
    m_wait =
        new COpeningWait(*m_mainWnd, GetSkin(), DesktopText("DSK0200"),
                         QString::fromStdString(cancel), [this] { Gate().cancelRequested = true; });
    ModalStack::Instance().Allow(*m_wait);
}

void CScanProcessWnd::HideWait()
{
    if (m_wait) {
        // Its button may be at work yet.
        m_wait->hide();
        m_wait->deleteLater();
        m_wait.clear();
    }
}

QWidget* CScanProcessWnd::OwnerOfQuestions()
{
    return isVisible() ? this : parentWidget();
}

void CScanProcessWnd::OnClosed()
{
    HideWait();
    CTaskWnd::OnClosed();
}
