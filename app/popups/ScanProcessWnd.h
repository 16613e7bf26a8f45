// Scans targets one after the other. It stays hidden until the first of them is open; when that takes its time, the main window
// says so.
#pragma once

#include "app/popups/TaskWnd.h"
#include "recovery/ScanDepth.h"

#include <QPointer>

#include <thread>
#include <vector>

class COpeningWait;

class CScanProcessWnd : public CTaskWnd
{
public:
    CScanProcessWnd();
    CScanProcessWnd(const CScanProcessWnd&) = delete;
    CScanProcessWnd& operator=(const CScanProcessWnd&) = delete;
    ~CScanProcessWnd() override;

    std::vector<RecoveryTarget*> targets;
    int engineMode = 1;  // 1: an earlier scan may be gone on with
    ScanDepth depth = ScanDepth::Deep;
    // What became of the targets that were scanned; filled when DoModal has returned.
    std::vector<ScanOutcome> outcomes;

    QString GetWindowClassName() const override { return QStringLiteral("UIScanProcessWnd"); }

protected:
    void RunTask(const TaskContext& context) override;
    bool StaysHidden() const override { return true; }
    void OnOpening(bool isOpening) override;
    QWidget* OwnerOfQuestions() override;
    void OnClosed() override;

private:
    void ShowWait();
    void HideWait();

    QPointer<COpeningWait> m_wait;
    bool m_isOpening = false;
    std::thread m_firstUse;  // tells the maker's site, where there is one
};
