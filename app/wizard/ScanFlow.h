// From the scan button to the page of results: the scan of what is chosen, then the search of what it found.
#pragma once

#include "app/tasks/CloseCode.h"
#include "app/wizard/DiskRows.h"
#include "app/wizard/MainContext.h"
#include "app/wizard/ResultPage.h"
#include "app/wizard/TargetChooser.h"
#include "app/wizard/WizardPages.h"
#include "recovery/ScanDepth.h"
#include "results/TypeFilterMap.h"

#include <optional>
#include <vector>

class ScanFlow
{
public:
    ScanFlow(MainContext& context,
             DiskRows& disks,
             ResultPage& results,
             WizardPages& pages,
             const TypeFilterMap& filter);

    // targetChosen: a target has been selected since the start.
    void Start(bool targetChosen);
    // The scan is over, however it ended.
    void OnScanDone();
    // The results are there.
    void OnSearchDone();

    bool IsScanning() const { return m_isScanning; }
    // A target that goes away.
    void Forget(const RecoveryTarget& target);
    void RewriteTexts() { m_chooser.Refresh(m_searched); }

private:
    void Search(RecoveryTarget& target);
    // In place of the results that are shown; what is ticked among them stays ticked.
    void ShowResultsOf(RecoveryTarget& target);
    struct Run
    {
        int code = CloseFailed;  // that the window was closed with
        std::vector<ScanOutcome> outcomes;
    };

    bool MayWriteRecords(const std::vector<RecoveryTarget*>& targets) const;
    Run Scan(const std::vector<RecoveryTarget*>& targets, ScanDepth depth);
    void TellWhyNot(const std::optional<TargetRefusal>& refusal) const;
    // True for those whose file system ended their scan, where the user wants all their sectors scanned.
    bool WantsWhole(const std::vector<RecoveryTarget*>& damaged) const;

    MainContext& m_context;
    DiskRows& m_disks;
    ResultPage& m_results;
    WizardPages& m_pages;
    const TypeFilterMap& m_filter;
    TargetChooser m_chooser;
    RecoveryTarget* m_lastTarget = nullptr;      // of the latest scan
    const RecoveryTarget* m_searched = nullptr;  // whose files are shown
    bool m_isScanning = false;
    int m_doneToSkip = 0;  // ends of scans that another scan follows at once
};
