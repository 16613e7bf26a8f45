// Fetches one file for a preview.
#pragma once

#include "app/popups/TaskWnd.h"

class CPreviewWnd;

class CPreviewProcessWnd : public CTaskWnd
{
public:
    CPreviewProcessWnd();
    CPreviewProcessWnd(const CPreviewProcessWnd&) = delete;
    CPreviewProcessWnd& operator=(const CPreviewProcessWnd&) = delete;
    ~CPreviewProcessWnd() override;

    CPreviewWnd* previewWnd = nullptr;  // gets what was fetched
    const FoundRow* record = nullptr;

    QString GetWindowClassName() const override { return QStringLiteral("UIPreviewProcessWnd"); }

protected:
    void OnTaskInit() override;
    void RunTask(const TaskContext& context) override;
};
