#include "app/wizard/InlinePreview.h"

#include "app/popups/PreviewProcessWnd.h"
#include "app/preview/PreviewPane.h"
#include "app/wizard/MainTexts.h"

#include <QEvent>
#include <QEventLoop>

#include <utility>

namespace {

constexpr int RestMilliseconds = 300;
// In which the player gets its window.
constexpr int PlayerStartMilliseconds = 1000;

void WaitWithoutInput(int milliseconds)
{
    QEventLoop loop;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    timer.start(milliseconds);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace

InlinePreview::InlinePreview(MainContext& context, std::function<const FoundRow*()> current)
    : m_context(context),
      m_current(std::move(current)),
      m_list(context.window.FindControlAs<CListUI>(QStringLiteral("FileList"))),
      m_pane(context.window.FindControlAs<CRichEditUI>(QStringLiteral("PreviewEdit")))
{
    m_delay.setSingleShot(true);
    m_keyAtWork.setSingleShot(true);
    connect(&m_delay, &QTimer::timeout, this, [this] { ShowCurrent(); });
    m_list->installEventFilter(this);
    m_context.window.FindControl(QStringLiteral("FileGrid"))->Widget()->installEventFilter(this);
}

InlinePreview::~InlinePreview()
{
    if (!m_tempPath.empty()) {
        std::error_code ignored;
        std::filesystem::remove(m_tempPath, ignored);
    }
}

// A selection by the keyboard is made while its key press is being handled.
bool InlinePreview::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        // Runs until the key press was handled.
        m_keyAtWork.start(0);
    }
    return QObject::eventFilter(watched, event);
}

void InlinePreview::OnSelect()
{
    // Never at once: whoever selects is still at work in the list.
    m_delay.start(m_keyAtWork.isActive() ? RestMilliseconds : 0);
}

void InlinePreview::ShowCurrent()
{
    const FoundRow* found = m_current();
    if (found == nullptr || m_context.flows > 0 || CPopUpWnd::IsAnyModal()) {
        return;
    }
    m_pane->Clear();
    if (found->record.IsFolder != 0) {
        ShowText(*m_pane, ToQt(MessageText("MSG0904")), FallbackSpacing);
        return;
    }
    Fetch(*found);
}

void InlinePreview::Fetch(const FoundRow& found)
{
    const FlowGuard guard(m_context);
    const auto fetched = std::make_unique<CPreviewWnd>();
    fetched->SetMain(&m_context.window, &m_context.state);
    auto* process = new CPreviewProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    process->record = &found;
    process->previewWnd = fetched.get();
    const int code =
        process->Create(&m_context.window, 370, 200) ? process->DoModal() : CloseCancelled;
    process->Release();
    if (code == CloseDone) {
        ShowFetched(*fetched);
    }
}

void InlinePreview::ShowFetched(CPreviewWnd& fetched)
{
    if (fetched.data.isPlayable && !fetched.data.tempPath.empty()) {
        Play(fetched.data);
        return;
    }
    m_tempPath = fetched.TakeTempPath();
    if (!m_tempPath.empty()) {
        InsertPicture(m_pane, m_tempPath, ToQt(MessageText("MSG0905")));
    }
}

void InlinePreview::Play(const PreviewData& data) const
{
    if (data.isAudio) {
        m_context.services.playAudio(data.tempPath);
    } else {
        m_context.services.playVideo(data.tempPath);
        WaitWithoutInput(PlayerStartMilliseconds);
    }
}
