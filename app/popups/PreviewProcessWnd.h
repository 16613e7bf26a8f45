// Fetches one file for a preview.
#pragma once

#include "app/popups/TaskWnd.h"

class CPreviewWnd;

class CPreviewProcessWnd : public CTaskWnd
{
public:
    CPreviewProcessWnd();

    CPreviewWnd* previewWnd = nullptr;  // gets what was fetched
    const FoundRow* record = nullptr;

    QString GetWindowClassName() const override { return QStringLiteral("UIPreviewProcessWnd"); }
};
