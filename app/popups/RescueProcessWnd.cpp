#include "app/popups/RescueProcessWnd.h"

namespace {

constexpr TaskLook RescueLook = {
    TaskKind::Rescue, "RescueProcessWnd.xml", "CreateImageWnd", "EXT0219", 150, "Extras"};

}  // namespace

CRescueProcessWnd::CRescueProcessWnd() : CTaskWnd(RescueLook) {}

CRescueProcessWnd::~CRescueProcessWnd()
{
    StopWorker();
}

void CRescueProcessWnd::OnTaskInit()
{
    SetPlainText(QStringLiteral("title"), ExtraText("EXT0209"));
}

void CRescueProcessWnd::RunTask(const TaskContext& context)
{
    Session::AskForRights();
    RescueWorker worker(context);
    worker.source = source;
    worker.outputPath = outputPath;
    worker.copiedBytes = copiedBytes;
    worker.Run();
    outcome = worker.outcome;
    problem = worker.problem;
}
