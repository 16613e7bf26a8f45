// Names the drives and images whose scans have found something, above the found files: those of one at a time are shown. It is
// hidden as long as there is nothing to choose.
#pragma once

#include "app/tasks/RecoveryState.h"
#include "ui/controls/ComboUI.h"
#include "ui/windows/WindowImplBase.h"

#include <QTimer>

#include <functional>
#include <vector>

class DiskRows;

// User-interface thread.
class TargetChooser
{
public:
    // The window's controls are there.
    TargetChooser(const WindowImplBase& window, const DiskRows& disks);

    // The user wants to see the files of another. It is told once nothing holds on to the results any more.
    std::function<void(RecoveryTarget& target)> onChoose;
    std::function<bool()> mayChoose;

    // Whenever targets were scanned, have gone, or are called otherwise. shown may be null.
    void Refresh(const RecoveryTarget* shown);

private:
    void TellChosen();

    const DiskRows& m_disks;
    CComboUI* m_field;
    std::vector<RecoveryTarget*> m_targets;  // as they stand in the field
    QTimer m_telling;
};
