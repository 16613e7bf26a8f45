#include "cli/RescueRun.h"

#include "cli/Cancel.h"
#include "cli/ProgressLine.h"
#include "cli/TextForms.h"
#include "cli/Words.h"

#include <ostream>

namespace {

constexpr std::size_t SmallestStrip = 16;
constexpr std::size_t LargestStrip = 60;
constexpr std::uint64_t ToldFromSeconds = 2;

std::string StepText(const RescueProgress& progress)
{
    switch (progress.step) {
    case RescueStep::Copying:
        return "pass " + std::to_string(progress.pass);
    case RescueStep::Trimming:
        return "edges of bad areas";
    case RescueStep::Scraping:
        return "inside bad areas";
    case RescueStep::Retrying:
        return "retry " + std::to_string(progress.pass);
    case RescueStep::Finished:
        break;
    }
    return "end";
}

Refusal WhyNot(const RescueProblem& problem, const RescueTask& task, const std::string& source)
{
    const std::string map = Printable(task.MapFile().string());
    switch (problem.fault) {
    case RescueFault::BrokenMap:
        return {ExitStatus::WrongUse, map + " is no map of a rescue, or cannot be read; move it "
                                            "away to begin anew."};
    case RescueFault::OtherMap:
        return {ExitStatus::WrongUse,
                map + " is of a larger disk than " + Printable(source) + "; choose another name."};
    case RescueFault::MapWithoutImage:
        return {ExitStatus::WrongUse,
                map + " tells of data that are not in " + Printable(task.Image().File().string()) +
                    "; bring the image back, or move the map away to begin anew."};
    case RescueFault::Image:
    case RescueFault::None:
        break;
    }
    return ::WhyNot(problem.image, task.Image(), source);
}

std::string MissingText(const RescueOutcome& outcome)
{
    return SizeText(outcome.MissingBytes()) + " of " + SizeText(outcome.totalBytes) +
           " are missing" +
           (outcome.badBytes != 0
                ? ", " + SizeText(outcome.badBytes) + " of them in " +
                      CountText(outcome.badPlaces, "place") + " that could not be read"
                : "");
}

ExitStatus Tell(const RescueOutcome& outcome,
                const RescueTask& task,
                const CommandOptions& options,
                CommandStreams& streams)
{
    const std::string name = Printable(task.Image().File().string());
    const std::string goOn =
        outcome.begun ? " " + MissingText(outcome) + ". The same command goes on from there." : "";
    switch (outcome.end) {
    case RescueEnd::Complete:
        if (outcome.MissingBytes() != 0) {
            streams.err << "lumivault-cli: " << MissingText(outcome) << "; they are holes in "
                        << name << ", which can be scanned.\n";
            return ExitStatus::SomeFailed;
        }
        if (!options.quiet) {
            streams.out << "All " << SizeText(outcome.totalBytes) << " are in " << name << ".\n";
        }
        return ExitStatus::Done;
    case RescueEnd::Stopped:
        streams.err << "Cancelled." << goOn << '\n';
        return ExitStatus::Cancelled;
    case RescueEnd::SourceNotOpened:
        return Refuse(WhyNot(WhyNotOpened(options.target, outcome.why)), streams);
    case RescueEnd::SourceGone:
        return Refuse({ExitStatus::TargetFailed, "the disk is gone." + goOn}, streams);
    case RescueEnd::InUse:
        return Refuse({ExitStatus::WrongUse, "another process is writing " + name +
                                                 "; wait for it, or choose another name."},
                      streams);
    case RescueEnd::NotChecked:
    case RescueEnd::Failed:
        break;
    }
    return Refuse({ExitStatus::TargetFailed, name + ": " + ErrorText(outcome.why) + goOn}, streams);
}

}  // namespace

std::string RescueText(const RescueProgress& progress, std::size_t columns)
{
    const std::uint64_t total = progress.totalBytes;
    const std::uint64_t percent = total != 0 ? progress.rescuedBytes / (total / 100 + 1) : 0;
    std::string text = "Rescuing, " + StepText(progress) + ": " +
                       std::to_string(progress.rescuedBytes == total ? 100 : percent) + "%, " +
                       SizeText(progress.rescuedBytes) + " rescued";
    if (progress.badBytes != 0) {
        text += ", " + SizeText(progress.badBytes) + " bad in " +
                CountText(progress.badPlaces(), "place");
    }
    text += ", " + SizeText(progress.bytesPerSecond) + "/s";
    if (progress.readSeconds >= ToldFromSeconds) {
        text +=
            ", a read hangs for " + DurationText(static_cast<std::int32_t>(progress.readSeconds));
    } else if (progress.secondsSinceGood >= ToldFromSeconds) {
        text += ", last good read " +
                DurationText(static_cast<std::int32_t>(progress.secondsSinceGood)) + " ago";
    }
    constexpr std::size_t Frame = 4;  // " [", "]" and the column that the cursor takes
    if (columns >= text.size() + Frame + SmallestStrip) {
        text += " [" + progress.strip(std::min(columns - text.size() - Frame, LargestStrip)) + "]";
    }
    return text;
}

ExitStatus RunRescue(const ScanTarget& source,
                     const CommandOptions& options,
                     CommandStreams& streams,
                     ImageQuestion isAllowed)
{
    RescueTask task(source, options.imageFile);
    const std::string name = Printable(task.Image().File().string());
    while (const std::optional<RescueProblem> problem = task.NextProblem()) {
        if (problem->fault != RescueFault::Image ||
            !isAllowed(problem->image, name, options, streams)) {
            return Refuse(WhyNot(*problem, task, options.target), streams);
        }
    }
    if (task.GoesOn() && !options.quiet) {
        streams.err << "Going on with an earlier rescue.\n";
    }
    RescueOutcome outcome;
    {
        ProgressLine line(streams, options.quiet);
        outcome = task.Run(options.retries, [&line](const RescueProgress& progress) {
            if (CancelScope::Requested()) {
                return Answer::Stop;
            }
            if (line.IsDue()) {
                line.Show(RescueText(progress, line.Columns() + 1));
            }
            return Answer::GoOn;
        });
    }
    return Tell(outcome, task, options, streams);
}
