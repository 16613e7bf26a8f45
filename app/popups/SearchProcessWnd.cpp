#include "app/popups/SearchProcessWnd.h"

#include "app/popups/Messages.h"
#include "app/tasks/SearchWorker.h"
#include "results/TypeFilterMap.h"

namespace {

constexpr TaskLook SearchLook = {TaskKind::Search, "SearchProcessWnd.xml", "SearchProcessWnd",
                                 "MSG1205", 150};

}  // namespace

CSearchProcessWnd::CSearchProcessWnd() : CTaskWnd(SearchLook) {}

CSearchProcessWnd::~CSearchProcessWnd()
{
    StopWorker();
}

void CSearchProcessWnd::SetFilter(std::string_view wildcardFilter)
{
    m_filter = FilterPattern(wildcardFilter);
}

void CSearchProcessWnd::RunTask(const TaskContext& context)
{
    if (m_mainWnd == nullptr) {
        return;
    }
    TaskContext own = context;
    own.host.postDone = [this] { PostToMain(WM_SEARCH_DONE); };
    SearchWorker worker(own, *m_state);
    worker.targets = targets;
    worker.pattern = m_filter;
    worker.Run();
}
