#include "app/tasks/RescueWorker.h"

#include "app/tasks/CloseCode.h"
#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"
#include "texts/TextForms.h"

#include <utility>

namespace {

// One more try of what could not be read, sector by sector, after the passes: it often brings some.
constexpr std::uint32_t Retries = 1;
// The figures go through the map, which can be long.
constexpr std::chrono::milliseconds ShownEvery(250);
constexpr std::uint64_t ToldFromSeconds = 3;

const char* KeyOf(RescueStep step)
{
    switch (step) {
    case RescueStep::Copying:
        return "EXT0211";
    case RescueStep::Trimming:
        return "EXT0212";
    case RescueStep::Scraping:
        return "EXT0213";
    case RescueStep::Retrying:
    case RescueStep::Finished:
        break;
    }
    return "EXT0214";
}

int PercentOf(const RescueProgress& progress)
{
    const std::uint64_t total = progress.totalBytes;
    return progress.rescuedBytes >= total
               ? 100
               : static_cast<int>(progress.rescuedBytes / (total / 100 + 1));
}

int CloseCodeOf(RescueEnd end)
{
    if (end == RescueEnd::Complete) {
        return CloseDone;
    }
    return end == RescueEnd::Stopped ? CloseCancelled : CloseFailed;
}

}  // namespace

RescueWorker::RescueWorker(TaskContext context) : m_context(std::move(context)) {}

// The user has agreed to this file before; what is no question cannot be answered.
bool RescueWorker::IsChecked(RescueTask& task)
{
    while ((problem = task.NextProblem())) {
        if (problem->fault != RescueFault::Image || !problem->image.IsQuestion()) {
            return false;
        }
    }
    return true;
}

void RescueWorker::Run()
{
    m_context.board.SetText(
        "stage", FormatText("%s %s", m_context.messages.Get("MSG0302"), outputPath.string()));
    outcome.end = RescueEnd::NotChecked;
    RescueTask task(source, outputPath);
    if (copiedBytes) {
        task.TakeCopied(*copiedBytes);
    }
    if (IsChecked(task)) {
        outcome = task.Run(Retries,
                           [this](const RescueProgress& progress) { return OnProgress(progress); });
    }
    m_context.gate.finished = true;
    m_context.host.close(CloseCodeOf(outcome.end));
}

Answer RescueWorker::OnProgress(const RescueProgress& progress)
{
    return TellProgress(m_context.gate, [&] {
        const auto now = std::chrono::steady_clock::now();
        if (now - m_shown < ShownEvery && progress.step != RescueStep::Finished) {
            return;
        }
        m_shown = now;
        ShowPercent(m_context, "MSG0301", PercentOf(progress));
        ShowStep(progress);
        LanguageSection& extras = m_context.extras;
        ProgressBoard& board = m_context.board;
        board.SetText("rescued",
                      FormatText(extras.Get("EXT0215"), FormatBytes(progress.rescuedBytes),
                                 FormatBytes(progress.totalBytes)));
        board.SetText("unreadable",
                      FormatText(extras.Get("EXT0216"), FormatBytes(progress.badBytes),
                                 std::uint64_t{progress.badPlaces()}));
        const auto elapsed = std::chrono::duration_cast<std::chrono::seconds>(now - m_begun);
        board.SetText("time", FormatText("%s %s", extras.Get("EXT0217"),
                                         FormatDuration(std::int64_t{elapsed.count()})));
        board.SetText("strip", progress.strip(StripCells));
    });
}

// A read that hangs is the news then.
void RescueWorker::ShowStep(const RescueProgress& progress) const
{
    LanguageSection& extras = m_context.extras;
    m_context.board.SetText(
        "step", progress.readSeconds >= ToldFromSeconds
                    ? FormatText(extras.Get("EXT0218"),
                                 FormatDuration(static_cast<std::int64_t>(progress.readSeconds)))
                    : extras.Get(KeyOf(progress.step)));
}

std::string RescueSummary(const RescueOutcome& outcome, LanguageSection& extras)
{
    const std::string read = FormatText(extras.Get("EXT0215"), FormatBytes(outcome.rescuedBytes),
                                        FormatBytes(outcome.totalBytes));
    switch (outcome.end) {
    case RescueEnd::Complete:
        return outcome.MissingBytes() == 0 ? extras.Get("EXT0220")
                                           : FormatText(extras.Get("EXT0221"), read);
    case RescueEnd::Stopped:
        return FormatText(extras.Get("EXT0222"), read);
    case RescueEnd::SourceGone:
        return FormatText(extras.Get("EXT0223"), read);
    case RescueEnd::InUse:
        return extras.Get("EXT0225");
    case RescueEnd::NotChecked:
    case RescueEnd::SourceNotOpened:
    case RescueEnd::Failed:
        break;
    }
    return FormatText(extras.Get("EXT0224"), ErrorText(outcome.why));
}
