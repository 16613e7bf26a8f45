#include "cli/CommandLine.h"

#include "cli/Cancel.h"
#include "cli/Completion.h"
#include "cli/Manual.h"
#include "cli/TextForms.h"
#include "cli/Words.h"
#include "platform/Version.h"
#include "session/Session.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

namespace {

// In the order in which the help shows them.
const Command* const Commands[] = {&TargetsCommand, &ScanCommand,  &ListCommand,  &RecoverCommand,
                                   &ImageCommand,   &ScansCommand, &ForgetCommand};

constexpr const char* Description = "Gets deleted photos, audio, video and documents back from "
                                    "disks and disk images. The source is\n"
                                    "only read, never written.";
constexpr const char* Examples =
    "Examples:\n"
    "  lumivault-cli targets                           the disks with their partitions and "
    "numbers\n"
    "  lumivault-cli scan card.img                     what can be found on the image of a card\n"
    "  lumivault-cli recover card.img ./recovered      photos, audio and video into ./recovered\n"
    "  sudo lumivault-cli recover /dev/sdb1 ./recovered --types photo,pdf\n"
    "  sudo lumivault-cli image '#3' ./card.img --rescue    a copy of what fails, to be scanned in "
    "its place\n"
    "\n"
    "Exit status: 0 done, 1 some files failed or are incomplete, or sectors are missing, 2 wrong "
    "use, 3 the\n"
    "target could "
    "not be opened or scanned, 130 cancelled. 'lumivault-cli COMMAND --help' tells more.";

void AddCommonOptions(CLI::App& app, CommandOptions& options)
{
    app.add_option("--data-dir", options.dataFolder,
                   "keep scan records here, not in the user's data folder")
        ->type_name("DIR");
    app.add_flag("--quiet,-q", options.quiet, "no progress, no notes; results and errors only");
}

CLI::App* AddCommand(CLI::App& app, const Command& command, CommandOptions& options)
{
    CLI::App* const sub = app.add_subcommand(std::string(command.name), std::string(command.help));
    sub->footer("Examples:\n" + std::string(command.examples));
    command.addOptions(*sub, options);
    AddCommonOptions(*sub, options);
    return sub;
}

std::string CommandNames()
{
    std::string names;
    for (const Command* command : Commands) {
        names += (names.empty() ? "" : ", ") + std::string(command->name);
    }
    return names;
}

// What stands where a command should.
std::optional<Refusal> WhyNoCommand(const std::vector<std::string>& arguments)
{
    const auto word = std::find_if(arguments.begin(), arguments.end(),
                                   [](const std::string& one) { return !one.starts_with('-'); });
    const bool known =
        word == arguments.end() || word != arguments.begin() ||
        std::any_of(std::begin(Commands), std::end(Commands),
                    [&word](const Command* command) { return command->name == *word; });
    if (known) {
        return std::nullopt;
    }
    const std::string name = Printable(*word);
    std::error_code error;
    const bool isTarget =
        !word->empty() && (word->starts_with('#') || std::filesystem::exists(*word, error));
    return Refusal{ExitStatus::WrongUse,
                   (name.empty() ? "The command is empty" : "'" + name + "' is no command") +
                       (isTarget ? "; to see what can be found there: lumivault-cli scan '" + name +
                                       "'. Commands are "
                                 : "; commands are ") +
                       CommandNames() + ". See 'lumivault-cli --help'."};
}

// "help" and "help scan" are what --help is after the command, and -v is what many type for the version.
void TranslateHabits(std::vector<std::string>& arguments)
{
    if (arguments.empty()) {
        return;
    }
    if (arguments[0] == "help") {
        arguments.erase(arguments.begin());
        arguments.resize(std::min<std::size_t>(arguments.size(), 1));
        arguments.emplace_back("--help");
    } else if (arguments[0] == "-v" || arguments[0] == "-V") {
        arguments[0] = "--version";
    }
}

// What the installation and the completions of shells ask for. Neither is a command for people, and no help shows it.
bool WritesAboutItself(const CLI::App& app,
                       const std::vector<std::string>& arguments,
                       CommandStreams& streams,
                       Session& session)
{
    const std::string word = arguments.empty() ? std::string() : arguments.front();
    if (word == "--write-manual") {
        WriteManual(app, streams.out);
    } else if (word == "complete") {
        WriteCompletions(app, {arguments.begin() + 1, arguments.end()}, session, streams.out);
    } else {
        return false;
    }
    return true;
}

// An empty value is mostly a variable of a script that was not set.
std::optional<Refusal> WhyEmpty(const CLI::App& chosen)
{
    for (const CLI::Option* const option : chosen.get_options()) {
        const std::vector<std::string>& values = option->results();
        if (option->get_items_expected_max() != 0 &&
            std::find(values.begin(), values.end(), std::string()) != values.end()) {
            return Refusal{ExitStatus::WrongUse,
                           option->get_name() +
                               " is empty; give a value, or leave it out. See "
                               "'lumivault-cli " +
                               chosen.get_name() + " --help'."};
        }
    }
    return std::nullopt;
}

ExitStatus Fail(const CLI::App& app, const CLI::ParseError& error, CommandStreams& streams)
{
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        (void)app.exit(error, streams.out, streams.err);  // help or version, printed
        return ExitStatus::Done;
    }
    std::string sentence = error.what();
    std::replace(sentence.begin(), sentence.end(), '\n', ' ');
    return Refuse({ExitStatus::WrongUse, sentence + ". See 'lumivault-cli --help'."}, streams);
}

}  // namespace

ExitStatus
RunCommandLine(std::vector<std::string> arguments, CommandStreams& streams, Session& session)
{
    CommandOptions options;
    CLI::App app(Description, "lumivault-cli");
    app.footer(Examples);
    app.set_version_flag("--version,-v", std::string("lumivault-cli ") + LumivaultVersion);
    app.require_subcommand(1);
    const Command* chosen = nullptr;
    for (const Command* command : Commands) {
        AddCommand(app, *command, options)->callback([&chosen, command] { chosen = command; });
    }
    if (WritesAboutItself(app, arguments, streams, session)) {
        return ExitStatus::Done;
    }
    TranslateHabits(arguments);
    if (const std::optional<Refusal> refusal = WhyNoCommand(arguments)) {
        return Refuse(*refusal, streams);
    }
    try {
        std::reverse(arguments.begin(), arguments.end());  // as the parser wants them
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return Fail(app, error, streams);
    }
    if (const std::optional<Refusal> refusal =
            WhyEmpty(*app.get_subcommand(std::string(chosen->name)))) {
        return Refuse(*refusal, streams);
    }
    if (!options.dataFolder.empty()) {
        std::error_code ignored;
        session.History().KeepRecordsIn(std::filesystem::absolute(options.dataFolder, ignored));
    }
    try {
        return chosen->run(options, streams, session);
    } catch (const std::bad_alloc&) {
        return Refuse(WhyBroken(ResultOutOfMemory), streams);
    }
}

std::string ReadAnswer(const std::string& question, CommandStreams& streams)
{
    const CancelPause pause;
    streams.err << question << std::flush;
    std::string answer;
    std::getline(*streams.answers, answer);
    return answer;
}

bool Ask(const std::string& question, CommandStreams& streams)
{
    if (streams.answers == nullptr) {
        return false;
    }
    const std::string answer = ReadAnswer(question + " [y/N] ", streams);
    return !answer.empty() && (answer.front() == 'y' || answer.front() == 'Y');
}

ExitStatus Refuse(const Refusal& refusal, CommandStreams& streams)
{
    streams.err << "lumivault-cli: " << refusal.sentence << '\n';
    return refusal.status;
}

void AddTargetOption(CLI::App& app, CommandOptions& options)
{
    app.add_option("TARGET", options.target,
                   "an image file, a block device, '#N' with a number that 'targets' shows, or "
                   "IMAGE#N for a part that 'targets IMAGE' shows")
        ->required();
}

void AddScanOptions(CLI::App& app, CommandOptions& options)
{
    AddTargetOption(app, options);
    auto* const fast = app.add_flag(
        "--fast", options.fast, "only what the file system still knows, quickly; no lost files");
    auto* const whole = app.add_flag("--whole", options.whole,
                                     "read every sector beside what the file system still "
                                     "knows: for volumes whose tables mislead or cannot be read");
    app.add_flag("--as-one-piece", options.asOnePiece,
                 "scan a disk or an image with a table of partitions as if it had none, in place "
                 "of each partition and gap by itself");
    auto* const resume = app.add_flag("--resume", options.resume,
                                      "go on with an earlier scan of this target, without asking");
    auto* const fresh =
        app.add_flag("--new", options.fresh, "scan anew, and drop an earlier scan of this target");
    auto* const again =
        app.add_flag("--again-unread", options.againUnread,
                     "of an earlier complete scan read only what could not be read then");
    app.add_flag("--doubles", options.doubles,
                 "show also what is the same file once more, found in another way");
    fast->excludes(whole)->excludes(resume)->excludes(again);
    resume->excludes(fresh)->excludes(again);
    fresh->excludes(again);
}

void AddTypesOption(CLI::App& app, CommandOptions& options)
{
    app.add_option("--types", options.types,
                   "comma list of extensions and of photo, audio, video, document, archive, "
                   "others; or all. An "
                   "extension that is not known goes with a full stop in front")
        ->type_name("LIST")
        ->capture_default_str();
}

void AddJsonOption(CLI::App& app, CommandOptions& options)
{
    app.add_flag("--json", options.json, "one JSON object on standard output");
}
