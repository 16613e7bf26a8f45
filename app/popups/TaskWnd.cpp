#include "app/popups/TaskWnd.h"

#include "app/popups/MessageBox.h"
#include "texts/LanguageManager.h"
#include "ui/controls/LabelUI.h"

#include <QEventLoop>
#include <QTimer>

#include <system_error>
#include <utility>

namespace {

constexpr int QuestionWidth = 350;
constexpr int WaitStep = 50;  // milliseconds

// Whatever the user does meanwhile comes later.
void PumpForAStep()
{
    QEventLoop loop;
    QTimer::singleShot(WaitStep, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace

CTaskWnd::CTaskWnd(const TaskLook& look)
    : CPopUpWnd(QString::fromLatin1(look.skinFile)),
      m_look(look),
      m_gate(GateOf(look.kind)),
      m_question(m_gate),
      m_board([this] {
          QMetaObject::invokeMethod(
              this, [this] { Flush(); }, Qt::QueuedConnection);
      })
{
}

CTaskWnd::~CTaskWnd()
{
    StopWorker();
}

void CTaskWnd::InitWindow()
{
    m_gate.Reset();
}

void CTaskWnd::OnWindowInit()
{
    ApplyLanguage(m_look.section);
    OnTaskInit();
    try {
        m_worker = std::thread([this] { RunGuarded(); });
    } catch (const std::system_error&) {
        CloseWith(CloseFailed);
    }
}

void CTaskWnd::RunGuarded()
{
    LanguageManager& languages = LanguageManager::GetInstance();
    try {
        std::optional<EngineTurns::Task> turn;
        if (m_state != nullptr) {
            turn.emplace(m_state->turns);
        }
        RunTask({m_gate, m_board, languages.GetSection("Messages"), languages.GetSection("Desktop"),
                 languages.GetSection("Extras"), MakeHost()});
    } catch (...) {
        CloseWith(CloseFailed);  // memory ran out, or worse
    }
    m_hasEnded = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            // One that nobody sees would stay in front for ever.
            if (!isVisible() && StaysHidden()) {
                CloseWith(CloseCancelled);
            }
        },
        Qt::QueuedConnection);
}

TaskHost CTaskWnd::MakeHost()
{
    TaskHost host;
    host.postDone = [] {};
    host.close = [this](int code) { CloseWith(code); };
    host.show = [this] { ShowLater(); };
    host.ask = [this](const TaskBox& box) { return AskUser(box); };
    host.onOpening = [this](bool isOpening) {
        QMetaObject::invokeMethod(
            this, [this, isOpening] { OnOpening(isOpening); }, Qt::QueuedConnection);
    };
    return host;
}

void CTaskWnd::Answering::Give(int given)
{
    const std::lock_guard held(lock);
    if (!code) {
        code = given;
        hasCome.notify_one();
    }
}

int CTaskWnd::Answering::Wait()
{
    std::unique_lock held(lock);
    hasCome.wait(held, [this] { return code.has_value(); });
    return *code;
}

int CTaskWnd::AskUser(const TaskBox& box)
{
    const auto answering = std::make_shared<Answering>();
    {
        const std::lock_guard held(m_answeringLock);
        if (m_isStopped) {
            return CloseCancelled;
        }
        m_answering = answering;
    }
    QMetaObject::invokeMethod(
        this,
        [this, box, answering] {
            const auto kind = box.isQuestion ? CMessageBox::Question : CMessageBox::Information;
            answering->Give(CMessageBox::Show(OwnerOfQuestions(), kind, {},
                                              QString::fromStdString(box.text), box.width,
                                              box.height));
        },
        Qt::QueuedConnection);
    return answering->Wait();
}

void CTaskWnd::Flush()
{
    const BoardChanges changes = m_board.Take();
    for (const auto& [name, text] : changes.texts) {
        SetPlainText(QString::fromStdString(name), QString::fromStdString(text));
    }
    for (const auto& [name, value] : changes.values) {
        if (auto* const bar = FindControlAs<CProgressUI>(QString::fromStdString(name))) {
            bar->SetValue(value);
        }
    }
    for (const auto& [name, isVisible] : changes.visibilities) {
        if (CControlUI* const control = FindControl(QString::fromStdString(name))) {
            control->SetVisible(isVisible);
        }
    }
    if (!changes.visibilities.empty()) {
        OnVisibilities();
        FocusAnswer();  // the button that had the focus may be gone
    }
    if (!changes.rows.empty()) {
        OnRows(changes.rows);
    }
}

void CTaskWnd::OnClick(const Notification& notification)
{
    const QString& name = notification.sender->GetName();
    if (name == QLatin1String("closebtn") ||
        name.compare(QLatin1String("cancelbtn"), Qt::CaseInsensitive) == 0) {
        Cancel();
    }
}

void CTaskWnd::Cancel()
{
    if (IsDone()) {
        CloseWith(CloseDone);
        return;
    }
    if (m_hasEnded) {
        CloseWith(CloseCancelled);  // it has not closed the window, and never will
        return;
    }
    const CancelAnswer answer = m_question.Ask([this] {
        return CMessageBox::Show(this, CMessageBox::Question, {},
                                 TextOf(m_look.questionSection, m_look.questionKey), QuestionWidth,
                                 m_look.questionHeight) == CloseDone;
    });
    if (answer != CancelAnswer::Stop) {
        return;
    }
    m_question.WaitForEnd([this] { return m_hasEnded || IsClosing(); }, &PumpForAStep);
    if (const std::optional<int> code = CodeOfCancel()) {
        CloseWith(*code);
    }
}

void CTaskWnd::OnClosed()
{
    StopWorker();
    Flush();
}

void CTaskWnd::StopWorker()
{
    m_gate.cancelRequested = true;
    {
        const std::lock_guard held(m_answeringLock);
        m_isStopped = true;
        if (m_answering) {
            m_answering->Give(CloseCancelled);
        }
    }
    if (m_worker.joinable()) {
        m_worker.join();
    }
}
