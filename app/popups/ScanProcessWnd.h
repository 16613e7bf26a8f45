// Scans targets one after the other. It stays hidden until the first of them is open; when that takes its time, the main window
// says so.
#pragma once

#include "app/popups/TaskWnd.h"
#include "recovery/ScanDepth.h"

#include <QPointer>
#include <QTimer>

#include <functional>
#include <string>
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
    int engineMode = 1;  // 1: an earlier scan may be resumed
    ScanDepth depth = ScanDepth::Deep;
    // What became of the targets that were scanned, and of the one that could not be; filled when DoModal has returned.
    std::vector<ScanOutcome> outcomes;
    std::optional<TargetRefusal> refusal;

    QString GetWindowClassName() const override { return QStringLiteral("UIScanProcessWnd"); }

protected:
    void OnTaskInit() override;
    void RunTask(const TaskContext& context) override;
    bool StaysHidden() const override { return true; }
    void OnOpening(bool isOpening) override;
    QWidget* OwnerOfQuestions() override;
    void OnClosed() override;

private:
    void ShowWait();
    void HideWait();
    void DrawStrip();

    QPointer<COpeningWait> m_wait;
    bool m_isOpening = false;
    std::function<std::string(std::size_t cells)> m_strip;  // of the target that is scanned
    QTimer m_stripTimer;
    std::thread m_firstUse;  // tells the maker's site, where there is one
};
