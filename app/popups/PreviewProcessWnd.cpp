#include "app/popups/PreviewProcessWnd.h"

#include "app/player/Players.h"
#include "app/preview/PreviewWnd.h"
#include "app/tasks/PreviewWorker.h"

namespace {

constexpr TaskLook PreviewLook = {TaskKind::Preview, "PreviewProcessWnd.xml", "PreviewProcessWnd",
                                  "MSG0903", 150};

}  // namespace

CPreviewProcessWnd::CPreviewProcessWnd() : CTaskWnd(PreviewLook) {}

CPreviewProcessWnd::~CPreviewProcessWnd()
{
    StopWorker();
}

void CPreviewProcessWnd::OnTaskInit()
{
    if (record == nullptr) {
        return;
    }
    const std::string_view name = record->record.NameText();
    const QString shown = QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    SetPlainText(QStringLiteral("FileName"), shown);
    SetPlainText(QStringLiteral("stage"), Message("MSG0902") + QLatin1Char(' ') + shown);
}

void CPreviewProcessWnd::RunTask(const TaskContext& context)
{
    if (m_mainWnd == nullptr || previewWnd == nullptr || record == nullptr) {
        return;
    }
    PreviewWorker worker(context, *m_state, previewWnd->data);
    worker.row = *record;
    worker.killPlayers = &KillPlayers;
    worker.Run();
}
