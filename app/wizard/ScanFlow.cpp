#include "app/wizard/ScanFlow.h"

#include "app/popups/MessageBox.h"
#include "app/popups/ScanProcessWnd.h"
#include "app/popups/SearchProcessWnd.h"
#include "app/tasks/ScanRemarks.h"
#include "app/wizard/MainTexts.h"
#include "texts/LanguageManager.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace {

// Every scan looks for all that is there; how deep it goes is told beside it.
constexpr int DeepEngineMode = 1;

// Two lines of text a remark, and the frame around them.
constexpr int RemarkWidth = 450;
constexpr int RemarkHeight = 40;
constexpr int RemarkFrame = 90;

void TellRemarks(QWidget& parent, const std::vector<ScanOutcome>& outcomes)
{
    const std::vector<std::string> remarks =
        ScanRemarks(outcomes, LanguageManager::GetInstance().GetSection("Desktop"));
    if (remarks.empty()) {
        return;
    }
    QStringList lines;
    for (const std::string& remark : remarks) {
        lines.append(ToQt(remark));
    }
    CMessageBox::Show(&parent, CMessageBox::Warning, {}, lines.join(QLatin1Char('\n')), RemarkWidth,
                      RemarkFrame + RemarkHeight * static_cast<int>(lines.size()));
}

// Those whose quick stage ended the scan; that is asked about, and no fault to be told of beside it.
std::vector<RecoveryTarget*> TakeDamaged(const std::vector<RecoveryTarget*>& targets,
                                         std::vector<ScanOutcome>& outcomes)
{
    std::vector<RecoveryTarget*> damaged;
    for (std::size_t i = 0; i < outcomes.size() && i < targets.size(); ++i) {
        ScanOutcome& outcome = outcomes[i];
        const bool hasFailed = outcome.end == ScanEnd::Failed || outcome.end == ScanEnd::Incomplete;
        if (hasFailed && outcome.quickFault != ResultSuccess) {
            damaged.push_back(targets[i]);
            outcome.end = ScanEnd::Complete;
            outcome.quickFault = ResultSuccess;
        }
    }
    return damaged;
}

}  // namespace

ScanFlow::ScanFlow(MainContext& context,
                   DiskRows& disks,
                   ResultPage& results,
                   WizardPages& pages,
                   const TypeFilterMap& filter)
    : m_context(context),
      m_disks(disks),
      m_results(results),
      m_pages(pages),
      m_filter(filter),
      m_chooser(context.window, disks)
{
    m_chooser.mayChoose = [this] { return m_context.flows == 0; };
    m_chooser.onChoose = [this](RecoveryTarget& target) { ShowResultsOf(target); };
}

void ScanFlow::Start(bool targetChosen)
{
    const FlowGuard guard(m_context);
    const std::vector<RecoveryTarget*> targets = m_disks.CurrentTargets();
    if (!targetChosen || targets.empty()) {
        CMessageBox::Show(&m_context.window, CMessageBox::Information, {},
                          ToQt(MessageText("MSG0505")), 400, 130);
        return;
    }
    if (!MayWriteRecords(targets)) {
        return;
    }
    m_pages.cameFromTypes = m_pages.Current() == WizardPage::Types;
    if (m_lastTarget != nullptr) {
        m_lastTarget->engine.reset();
    }
    m_lastTarget = targets.back();
    Run run = Scan(targets, ScanDepth::Deep);
    const std::vector<RecoveryTarget*> damaged = TakeDamaged(targets, run.outcomes);
    TellRemarks(m_context.window, run.outcomes);
    if (!WantsWhole(damaged)) {
        return;
    }
    const bool wasTold = run.code == CloseDone;
    run = Scan(damaged, ScanDepth::Whole);
    m_doneToSkip += wasTold && run.code == CloseDone ? 1 : 0;
    TellRemarks(m_context.window, run.outcomes);
}

// What a scan writes down could land on the very files that it looks for.
bool ScanFlow::MayWriteRecords(const std::vector<RecoveryTarget*>& targets) const
{
    const bool isOnSource =
        std::any_of(targets.begin(), targets.end(), [this](const RecoveryTarget* target) {
            return m_context.state.session.History().LiesOn(target->Place());
        });
    return !isOnSource || CMessageBox::Show(&m_context.window, CMessageBox::Question, {},
                                            ToQt(ExtraText("EXT0281")), 450, 150) == CloseDone;
}

ScanFlow::Run ScanFlow::Scan(const std::vector<RecoveryTarget*>& targets, ScanDepth depth)
{
    Run run;
    auto* process = new CScanProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    process->targets = targets;
    process->engineMode = DeepEngineMode;
    process->depth = depth;
    if (process->Create(&m_context.window, 350, 250)) {
        m_isScanning = true;
        run.code = process->DoModal();
    }
    run.outcomes = std::move(process->outcomes);
    const std::optional<TargetRefusal> refusal = process->refusal;
    process->Release();
    if (run.code == CloseFailed) {
        TellWhyNot(refusal);
    }
    m_isScanning = false;
    return run;
}

void ScanFlow::TellWhyNot(const std::optional<TargetRefusal>& refusal) const
{
    CMessageBox::Show(&m_context.window, CMessageBox::Warning, {}, ToQt(MessageText("MSG0504")),
                      300, 130);
    if (refusal) {
        LanguageManager& languages = LanguageManager::GetInstance();
        const std::string reason =
            ReasonOf(*refusal, languages.GetSection("Desktop"), languages.GetSection("Extras"));
        CMessageBox::Show(&m_context.window, CMessageBox::Information, {}, ToQt(reason), 450, 150);
    }
}

bool ScanFlow::WantsWhole(const std::vector<RecoveryTarget*>& damaged) const
{
    return !damaged.empty() && CMessageBox::Show(&m_context.window, CMessageBox::Question, {},
                                                 ToQt(ExtraText("EXT0241")), 450, 150) == CloseDone;
}

void ScanFlow::OnScanDone()
{
    const FlowGuard guard(m_context);
    if (m_doneToSkip > 0) {
        --m_doneToSkip;
        return;
    }
    const DiskRows::Row* scanned = m_disks.FirstScanned();
    if (scanned == nullptr) {
        return;
    }
    m_context.state.selection.clear();
    m_results.UpdateSelectionLabel();
    m_results.Clear();
    m_results.ClearFilter();
    m_context.state.results.clear();
    if (!m_disks.HasCurrent()) {
        m_disks.Select(*scanned);
    }
    // One target alone, also after the scan of a whole disk: the user is offered the others beside it.
    Search(*DiskRows::TargetOf(*scanned));
}

void ScanFlow::ShowResultsOf(RecoveryTarget& target)
{
    if (target.engine == nullptr) {
        return;
    }
    const FlowGuard guard(m_context);
    m_results.Clear();
    m_context.state.results.clear();
    Search(target);
}

void ScanFlow::Search(RecoveryTarget& target)
{
    m_searched = &target;
    auto* process = new CSearchProcessWnd;
    process->SetMain(&m_context.window, &m_context.state);
    process->targets = {&target};
    process->SetFilter(WildcardFilter(m_filter));
    if (process->Create(&m_context.window, 370, 200)) {
        process->DoModal();
    }
    process->Release();
}

void ScanFlow::OnSearchDone()
{
    const FlowGuard guard(m_context);
    m_results.Clear();
    m_context.window.FindControl(QStringLiteral("TabRecover"))->SetEnabled(true);
    m_pages.Choose(WizardPage::Results);
    m_chooser.Refresh(m_searched);
    m_results.Build();
}

void ScanFlow::Forget(const RecoveryTarget& target)
{
    if (m_lastTarget == &target) {
        m_lastTarget = nullptr;
    }
    m_searched = m_searched == &target ? nullptr : m_searched;
    m_chooser.Refresh(m_searched);
}
