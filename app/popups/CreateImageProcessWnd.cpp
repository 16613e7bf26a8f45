#include "app/popups/CreateImageProcessWnd.h"

#include "app/tasks/ImageWorker.h"

namespace {

constexpr TaskLook ImageLook = {TaskKind::Image, "CreateImageProcessWnd.xml", "CreateImageWnd",
                                "MSG0306", 130};

}  // namespace

CCreateImageProcessWnd::CCreateImageProcessWnd() : CTaskWnd(ImageLook) {}

CCreateImageProcessWnd::~CCreateImageProcessWnd()
{
    StopWorker();
}

void CCreateImageProcessWnd::RunTask(const TaskContext& context)
{
    Session::AskForRights();
    ImageWorker worker(context);
    worker.outputPath = outputPath;
    worker.diskNumber = diskNumber;
    worker.targets = targets;
    worker.Run();
    outcome = worker.outcome;
}
