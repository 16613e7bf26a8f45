// Copies what can be read of a failing disk into an image file.
#pragma once

#include "app/popups/TaskWnd.h"
#include "app/tasks/RescueWorker.h"

class CRescueProcessWnd : public CTaskWnd
{
public:
    CRescueProcessWnd();
    CRescueProcessWnd(const CRescueProcessWnd&) = delete;
    CRescueProcessWnd& operator=(const CRescueProcessWnd&) = delete;
    ~CRescueProcessWnd() override;

    ScanTarget source;
    std::filesystem::path outputPath;
    std::optional<std::uint64_t> copiedBytes;
    // What became of it; filled when DoModal has returned.
    RescueOutcome outcome;
    std::optional<RescueProblem> problem;

    QString GetWindowClassName() const override { return QStringLiteral("UIRescueProcessWnd"); }

protected:
    void OnTaskInit() override;
    void RunTask(const TaskContext& context) override;
};
