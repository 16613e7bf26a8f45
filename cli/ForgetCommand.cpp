// lumivault-cli forget: removes earlier scans and their records from the log.
#include "cli/ScanLog.h"
#include "cli/TextForms.h"
#include "recovery/ScanLogDirectory.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace {

void AddOptions(CLI::App& app, CommandOptions& options)
{
    auto* const number =
        app.add_option("N", options.scanNumber, "the number that 'scans' shows for a scan");
    auto* const all = app.add_flag("--all", options.all, "all scans");
    number->excludes(all);
}

// Removes the chosen scans; *outFailure is the last thing that could not be removed.
std::size_t Forget(const CommandOptions& options, ResultCode* outFailure)
{
    ScanLogDirectory& log = *CommandLog();
    const std::vector<ScanLogEntry> entries = log.Entries();
    std::size_t forgotten = 0;
    for (const ScanLogEntry& entry : entries) {
        if (!options.all && NumberOf(entry) != options.scanNumber) {
            continue;
        }
        if (const ResultCode result = log.DeleteLog(LogFolderOf(entry))) {
            *outFailure = result;
        }
        ++forgotten;
    }
    if (const ResultCode result = forgotten != 0 ? log.Save() : ResultSuccess) {
        *outFailure = result;
    }
    return forgotten;
}

ExitStatus Run(const CommandOptions& options, CommandStreams& streams)
{
    if (options.scanNumber.empty() && !options.all) {
        return Refuse({ExitStatus::WrongUse,
                       "tell which scan to forget: a number that 'scans' shows, or --all."},
                      streams);
    }
    ScanLogLock lock;
    if (const std::optional<Refusal> refusal = lock.Take()) {
        return Refuse(*refusal, streams);
    }
    ResultCode failure = ResultSuccess;
    const std::size_t forgotten = Forget(options, &failure);
    if (failure != ResultSuccess) {
        return Refuse({ExitStatus::SomeFailed,
                       "some records could not be removed: " + ErrorText(failure) +
                           " Remove the rest by hand in " + CommandLog()->Root().string() + "."},
                      streams);
    }
    if (forgotten == 0 && !options.all) {
        return Refuse({ExitStatus::WrongUse, "there is no scan number " +
                                                 Printable(options.scanNumber) +
                                                 "; 'lumivault-cli scans' lists them."},
                      streams);
    }
    if (!options.quiet) {
        streams.err << CountText(forgotten, "scan") << " forgotten.\n";
    }
    return ExitStatus::Done;
}

}  // namespace

const Command ForgetCommand = {"forget", "remove an earlier scan and its records",
                               "  lumivault-cli forget 3\n"
                               "  lumivault-cli forget --all\n",
                               &AddOptions, &Run};
