#include "app/tasks/ScanWorker.h"

#include "app/tasks/CloseCode.h"
#include "app/tasks/Opening.h"
#include "app/tasks/ScanRemarks.h"
#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"
#include "texts/TextForms.h"

#include <utility>

namespace {

// The quick part of a deep scan ends below this; its time is not that of the whole.
constexpr std::int32_t RangeOfPass = 90;
constexpr StageKeys ScanStage = {"MSG0701", "MSG0702", "MSG0703"};

}  // namespace

ScanWorker::ScanWorker(TaskContext context, Session& session)
    : m_context(std::move(context)), m_session(session)
{
}

void ScanWorker::Run()
{
    if (targets.empty() || !ScanAll()) {
        return;
    }
    m_context.gate.finished = true;
    m_context.host.postDone();
    m_context.host.close(CloseDone);
}

// False when the window was closed on the way, and nothing is to be shown.
bool ScanWorker::ScanAll()
{
    for (RecoveryTarget* const target : targets) {
        if (m_context.gate.cancelRequested && !outcomes.empty()) {
            return true;  // between two of them: the next one keeps what it has
        }
        m_context.board.SetText("stage", StageText(m_context.messages, ScanStage, *target));
        target->engine.reset();
        const Opened opened = Open(*target);
        if (opened == Opened::Left && !outcomes.empty()) {
            return true;  // what was found before is shown
        }
        if (opened != Opened::Yes) {
            m_context.host.close(opened == Opened::Refused ? CloseFailed : CloseCancelled);
            return false;
        }
        // Kept here: the target may lose it while it runs.
        const std::shared_ptr<ScanSession> engine = target->engine;
        const EarlierChoice choice = AskForEarlier(*engine);
        m_context.host.show();
        if (onTarget) {
            onTarget(engine->Strip());
        }
        outcomes.push_back(engine->Scan(
            choice, [this](const Progress& progress) { return OnProgress(progress); }));
        if (outcomes.back().end == ScanEnd::Stopped) {
            return true;
        }
    }
    return true;
}

ScanWorker::Opened ScanWorker::Open(RecoveryTarget& target)
{
    m_context.host.onOpening(true);
    std::optional<OpenOutcome> outcome =
        OpenUnless([this] { return m_context.gate.cancelRequested.load(); },
                   m_session.Opener(target.Place(), depth));
    m_context.host.onOpening(false);
    if (!outcome) {
        return Opened::Left;
    }
    if (outcome->end != OpenEnd::Opened) {
        return TellWhyNot(target, *outcome);
    }
    target.engine = std::move(outcome->session);
    return Opened::Yes;
}

ScanWorker::Opened ScanWorker::TellWhyNot(const RecoveryTarget& target, const OpenOutcome& outcome)
{
    if (outcome.end == OpenEnd::NotLocked) {
        const bool isHeld = outcome.lock.end == LockEnd::HeldElsewhere;
        m_context.host.ask(
            {false, m_context.desktop.Get(isHeld ? "DSK0201" : "DSK0202"), 400, 150});
        return Opened::Told;
    }
    refusal = outcome.refusal;
    refusal->isImage = target.IsImage();
    return Opened::Refused;
}

EarlierChoice ScanWorker::AskForEarlier(const ScanSession& engine) const
{
    if (engineMode != 1 || !engine.Earlier()) {
        return EarlierChoice::GoOn;
    }
    const EarlierScan& earlier = *engine.Earlier();
    TaskBox box = {true, m_context.messages.Get("MSG1206"), 350, 150};
    if (const std::string remark = RemarkOnEarlier(earlier, m_context.extras); !remark.empty()) {
        box = {true, box.text + "\n" + remark, 450, 220};
    }
    if (m_context.host.ask(box) != CloseDone) {
        return EarlierChoice::Drop;
    }
    const bool canReadAgain = earlier.state == EarlierState::Complete && earlier.unreadSectors != 0;
    return canReadAgain && m_context.host.ask({true, m_context.extras.Get("EXT0204"), 400, 150}) ==
                               CloseDone
               ? EarlierChoice::ReadAgain
               : EarlierChoice::GoOn;
}

Answer ScanWorker::OnProgress(const Progress& progress) const
{
    return TellProgress(m_context.gate, [&] {
        ProgressBoard& board = m_context.board;
        LanguageSection& messages = m_context.messages;
        const bool isUnknown = progress.secondsLeft < 0;
        const std::string time =
            isUnknown || progress.range < RangeOfPass
                ? messages.Get("MSG0705")
                : messages.Get("MSG0708") + FormatDuration(progress.secondsLeft);
        ShowPercent(m_context, "MSG0704", progress.percent);
        board.SetText("time", isUnknown && progress.range == 100 ? std::string() : time);
        const bool isCounted = progress.total != 0;
        if (isCounted) {
            board.SetText("sectors", FormatText("%s %d / %d", messages.Get("MSG0706"),
                                                progress.done, progress.total));
            board.SetText("totalfile",
                          FormatText("%s %d", messages.Get("MSG0707"), progress.found));
        }
        board.SetVisible("sectors", isCounted);
        board.SetVisible("totalfile", isCounted);
    });
}
