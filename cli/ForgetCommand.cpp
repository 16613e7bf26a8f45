// lumivault-cli forget: removes earlier scans and their records from the log.
#include "cli/Command.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "session/Session.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace {

void AddOptions(CLI::App& app, CommandOptions& options)
{
    auto* const number =
        app.add_option("N", options.scanNumber, "the number that 'scans' shows for a scan");
    auto* const all =
        app.add_flag("--all", options.all, "all scans, and records that belong to none");
    number->excludes(all);
}

// What is told when a scan stays; nothing when all went well.
std::optional<Refusal> WhyNotForgotten(const CommandOptions& options, const ForgetOutcome& outcome)
{
    switch (outcome.end) {
    case ForgetEnd::Done:
        return std::nullopt;
    case ForgetEnd::NotLocked:
        return WhyNot(outcome.lock);
    case ForgetEnd::NoSuchScan:
        return Refusal{ExitStatus::WrongUse, "there is no scan number " +
                                                 Printable(options.scanNumber) +
                                                 "; 'lumivault-cli scans' lists them."};
    case ForgetEnd::InUse:
        return Refusal{ExitStatus::WrongUse, "the scan is in use."};
    case ForgetEnd::SomeLeft:
        return Refusal{ExitStatus::SomeFailed,
                       "some records could not be removed: " + ErrorText(outcome.why) +
                           " Remove the rest by hand in " + outcome.folder.string() + "."};
    case ForgetEnd::Failed:
        break;
    }
    return WhyBroken(outcome.why);
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams, Session& session)
{
    if (options.scanNumber.empty() && !options.all) {
        return Refuse({ExitStatus::WrongUse,
                       "tell which scan to forget: a number that 'scans' shows, or --all."},
                      streams);
    }
    const ForgetOutcome outcome =
        options.all ? session.History().ForgetAll() : session.History().Forget(options.scanNumber);
    if (const std::optional<Refusal> refusal = WhyNotForgotten(options, outcome)) {
        return Refuse(*refusal, streams);
    }
    if (!options.quiet) {
        streams.err << CountText(outcome.forgotten, "scan") << " forgotten"
                    << (outcome.unlisted != 0
                            ? ", and the records of " + CountText(outcome.unlisted, "scan") +
                                  " that the log does not list"
                            : std::string())
                    << ".\n";
    }
    return ExitStatus::Done;
}

}  // namespace

const Command ForgetCommand = {"forget", "remove an earlier scan and its records",
                               "  lumivault-cli forget 3\n"
                               "  lumivault-cli forget --all\n",
                               &AddOptions, &Run};
