// Restores what is ticked, or one record, into the folder of the state, and reports on each file.
#pragma once

#include "app/popups/TaskWnd.h"

class CRecoverProcessWnd : public CTaskWnd
{
public:
    CRecoverProcessWnd();

    bool singleMode = false;
    const FoundRow* singleRecord = nullptr;

    QString GetWindowClassName() const override { return QStringLiteral("UIRecoverProcessWnd"); }
};
