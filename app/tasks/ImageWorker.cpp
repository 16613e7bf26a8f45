#include "app/tasks/ImageWorker.h"

#include "app/tasks/CloseCode.h"
#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"
#include "texts/TextForms.h"

#include <utility>

namespace {

// The user has answered its questions in the dialogues before.
bool IsChecked(ImageTask& task)
{
    while (const std::optional<ImageProblem> problem = task.NextProblem()) {
        if (!problem->IsQuestion()) {
            return false;
        }
    }
    return true;
}

int CloseCodeOf(ImageEnd end)
{
    if (end == ImageEnd::Complete) {
        return CloseDone;
    }
    return end == ImageEnd::Stopped ? CloseCancelled : CloseFailed;
}

}  // namespace

ImageWorker::ImageWorker(TaskContext context) : m_context(std::move(context)) {}

ScanTarget ImageWorker::Source() const
{
    if (targets.empty()) {
        return WholeDisk(static_cast<std::uint32_t>(diskNumber));
    }
    const RecoveryTarget& first = *targets.front();
    return first.Place();
}

void ImageWorker::Run()
{
    m_context.board.SetText(
        "stage", FormatText("%s %s", m_context.messages.Get("MSG0302"), outputPath.string()));
    outcome.end = ImageEnd::NotChecked;
    if (!targets.empty() || diskNumber >= 0) {
        ImageTask task(Source(), outputPath);
        if (IsChecked(task)) {
            outcome = task.Run([this](const Progress& progress) { return OnProgress(progress); });
        }
    }
    const bool isRefused = outcome.end == ImageEnd::SourceNotOpened &&
                           (outcome.why == ResultAccessDenied || outcome.why == ResultNotSupported);
    if (isRefused) {
        m_context.host.ask({false, m_context.desktop.Get("DSK0203"), 400, 150});
    }
    m_context.gate.finished = true;
    m_context.host.close(CloseCodeOf(outcome.end));
}

Answer ImageWorker::OnProgress(const Progress& progress) const
{
    return TellProgress(m_context.gate, [&] {
        LanguageSection& messages = m_context.messages;
        ShowPercent(m_context, "MSG0301", progress.percent);
        m_context.board.SetText("time", progress.secondsLeft == -1
                                            ? messages.Get("MSG0304")
                                            : FormatText("%s %s", messages.Get("MSG0305"),
                                                         FormatDuration(progress.secondsLeft)));
        m_context.board.SetText("sectors", FormatText("%s %d / %d", messages.Get("MSG0303"),
                                                      progress.done, progress.total));
    });
}
