// Copies a target, or a whole disk, into an image file.
#pragma once

#include "app/popups/TaskWnd.h"
#include "session/ImageTask.h"

#include <filesystem>
#include <vector>

class CCreateImageProcessWnd : public CTaskWnd
{
public:
    CCreateImageProcessWnd();
    CCreateImageProcessWnd(const CCreateImageProcessWnd&) = delete;
    CCreateImageProcessWnd& operator=(const CCreateImageProcessWnd&) = delete;
    ~CCreateImageProcessWnd() override;

    std::filesystem::path outputPath;
    int diskNumber = -1;  // not negative: the whole of it, when there are no targets
    std::vector<RecoveryTarget*> targets;  // else the first of these
    // What became of it; filled when DoModal has returned.
    ImageOutcome outcome;

    QString GetWindowClassName() const override
    {
        return QStringLiteral("UICreateImageProcessWnd");
    }

protected:
    void RunTask(const TaskContext& context) override;
};
