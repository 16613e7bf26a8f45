// Scans targets one after the other.
#pragma once

#include "app/popups/TaskWnd.h"
#include "recovery/ScanDepth.h"

#include <vector>

class CScanProcessWnd : public CTaskWnd
{
public:
    CScanProcessWnd();

    std::vector<RecoveryTarget*> targets;
    int engineMode = 1;  // 1: an earlier scan may be gone on with
    ScanDepth depth = ScanDepth::Deep;

    QString GetWindowClassName() const override { return QStringLiteral("UIScanProcessWnd"); }
};
