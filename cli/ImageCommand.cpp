// lumivault-cli image: copies a disk or a part of it into a file.
#include "cli/Cancel.h"
#include "cli/ProgressLine.h"
#include "cli/RescueRun.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "session/ImageTask.h"
#include "session/Session.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace {

void AddOptions(CLI::App& app, CommandOptions& options)
{
    AddTargetOption(app, options);
    app.add_option("FILE", options.imageFile, "the image to make, on another disk")->required();
    app.add_flag("--force", options.force,
                 "write over a file that exists, and to a folder of which the system does not tell "
                 "whether it lies on the source");
    auto* const rescue = app.add_flag("--rescue", options.rescue,
                                      "for a disk that fails: what can be read comes first, bad "
                                      "areas are left out; FILE.map keeps "
                                      "what is known, so that a run that was stopped goes on");
    app.add_option("--retries", options.retries, "how often a bad sector is tried again in the end")
        ->type_name("N")
        ->needs(rescue);
}

std::string Sectors(std::uint64_t count, const ImageOutcome& outcome)
{
    return CountText(count, "sector") + " (" + SizeText(count * outcome.sectorSize) + ")";
}

// A question that somebody answers with yes, or that --force has answered.
bool IsAllowed(const ImageProblem& problem,
               const std::string& name,
               const CommandOptions& options,
               CommandStreams& streams)
{
    if (!problem.IsQuestion() || options.force) {
        return problem.IsQuestion();
    }
    return Ask(problem.fault == ImageFault::Exists
                   ? name + " exists. Write over it?"
                   : "The system does not tell whether " + name +
                         " lies on the source itself. Write it there all the same?",
               streams);
}

ImageOutcome Copy(ImageTask& image,
                  std::uint32_t sectorSize,
                  const CommandOptions& options,
                  CommandStreams& streams)
{
    ProgressLine line(streams, options.quiet);
    Pace pace;
    return image.Run([&line, &pace, sectorSize](const Progress& progress) {
        if (CancelScope::Requested()) {
            return Answer::Stop;
        }
        if (line.IsDue()) {
            line.Show(
                ProgressText(FiguresOf("Copying", progress, sectorSize, pace), line.Columns()));
        }
        return Answer::GoOn;
    });
}

ExitStatus Tell(const ImageOutcome& outcome,
                const std::string& name,
                const CommandOptions& options,
                CommandStreams& streams)
{
    const std::string kept = outcome.writtenSectors == 0
                                 ? "Nothing was copied."
                                 : "The " + Sectors(outcome.writtenSectors, outcome) +
                                       " that were read before stand in " + name +
                                       ", which can be scanned.";
    switch (outcome.end) {
    case ImageEnd::Complete:
        if (!options.quiet) {
            streams.out << Sectors(outcome.writtenSectors, outcome) << " copied into " << name
                        << ".\n";
        }
        return ExitStatus::Done;
    case ImageEnd::Stopped:
        streams.err << "Cancelled. " << kept << '\n';
        return ExitStatus::Cancelled;
    case ImageEnd::ReadFault:
        return Refuse({ExitStatus::TargetFailed, "the disk could not be read at sector " +
                                                     std::to_string(outcome.failedSector) + ". " +
                                                     kept +
                                                     " With --rescue all that can be read is "
                                                     "copied, and what is bad is left out."},
                      streams);
    case ImageEnd::SourceNotOpened:
        return Refuse(WhyNot(WhyNotOpened(options.target, outcome.why)), streams);
    case ImageEnd::NotChecked:
    case ImageEnd::Failed:
        break;
    }
    return Refuse({ExitStatus::TargetFailed, name + ": " + ErrorText(outcome.why) + " " + kept},
                  streams);
}

// A number says little: what stands behind it is told before it is copied.
std::string WhatIsCopied(const ScanTarget& source, const CommandOptions& options, Session& session)
{
    if (!options.target.starts_with('#')) {
        return {};
    }
    const TargetList list = session.ListTargets();
    std::vector<TargetRow> rows = list.rows;
    const std::vector<TargetRow> wholes = WholeDiskRows(list);
    rows.insert(rows.end(), wholes.begin(), wholes.end());
    for (const TargetRow& row : rows) {
        if (row.number != source.letter) {
            continue;
        }
        return "Copying " + std::string(KindName(row.kind)) + " " + Printable(options.target) +
               ", " + Printable(row.node.string()) +
               (row.fileSystem.empty() ? "" : ", " + Printable(row.fileSystem)) +
               (row.label.empty() ? "" : ", " + Printable(row.label)) + ": " +
               SizeText(source.ByteCount()) + " from sector " + std::to_string(source.startSector) +
               " of disk " + std::to_string(row.disk.number) + " (" +
               Printable(row.disk.node.string()) +
               (row.disk.model.empty() ? "" : ", " + Printable(row.disk.model)) + ").";
    }
    return {};
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    const CancelScope cancel;
    const ResolvedTarget source = session.Resolve(options.target);
    if (const auto* refusal = std::get_if<TargetRefusal>(&source)) {
        return Refuse(WhyNot(*refusal), streams);
    }
    const std::string copied = WhatIsCopied(std::get<ScanTarget>(source), options, session);
    if (!copied.empty() && !options.quiet) {
        streams.err << copied << '\n';
    }
    if (options.rescue) {
        return RunRescue(std::get<ScanTarget>(source), options, streams, &IsAllowed);
    }
    ImageTask image(std::get<ScanTarget>(source), options.imageFile);
    const std::string name = Printable(image.File().string());
    while (const std::optional<ImageProblem> problem = image.NextProblem()) {
        if (!IsAllowed(*problem, name, options, streams)) {
            return Refuse(WhyNot(*problem, image, options.target), streams);
        }
    }
    const ImageOutcome outcome =
        Copy(image, std::get<ScanTarget>(source).sectorSize, options, streams);
    const std::uint64_t written = outcome.WrittenBytes();
    if (outcome.oldBytes > written && written != 0 && !options.quiet) {
        streams.err << "Note: the file was longer before; what stood in it behind byte " << written
                    << " is still there.\n";
    }
    return Tell(outcome, name, options, streams);
}

}  // namespace

const Command ImageCommand = {
    "image", "copy a disk, a partition or a gap into an image file",
    "  sudo lumivault-cli image /dev/sdb ./card.img\n"
    "  sudo lumivault-cli image '#3' ./card.img\n"
    "  sudo lumivault-cli image /dev/sdb ./card.img --rescue --retries 2\n"
    "  lumivault-cli recover card.img ./recovered\n",
    &AddOptions, &Run};
