#include "cli/Manual.h"

#include "platform/Text.h"
#include "platform/Version.h"

#include <CLI/CLI.hpp>

#include <ostream>
#include <string>
#include <string_view>

namespace {

void WriteExamples(std::string_view lines, std::ostream& out)
{
    out << ".PP\n.nf\n" << ManualText(lines) << (lines.ends_with('\n') ? "" : "\n") << ".fi\n";
}

constexpr std::string_view ExamplesHead = "Examples:\n";
constexpr std::string_view ExitHead = "Exit status: ";

std::string_view Behind(std::string_view text, std::string_view head)
{
    const std::size_t at = text.find(head);
    return at == text.npos ? std::string_view() : text.substr(at + head.size());
}

// "-q, --quiet"
std::string NamesOf(const CLI::Option& option)
{
    std::string names = option.get_name(false, true);
    const std::size_t comma = names.find(',');
    return comma == names.npos ? names : names.insert(comma + 1, " ");
}

bool IsGiven(const CLI::Option& option)
{
    return option.get_name() != "--help" && !option.get_group().empty();
}

std::string UsageOf(const CLI::App& command)
{
    std::string usage = command.get_name();
    for (const CLI::Option* const option : command.get_options()) {
        if (option->get_positional()) {
            const std::string name = option->get_name(true);
            usage += option->get_required() ? " " + name : " [" + name + "]";
        }
    }
    return usage;
}

void WriteOptions(const CLI::App& command, std::ostream& out)
{
    for (const CLI::Option* const option : command.get_options()) {
        if (!IsGiven(*option)) {
            continue;
        }
        out << ".TP\n";
        if (option->get_positional()) {
            out << "\\fI" << ManualText(option->get_name(true)) << "\\fR\n";
        } else {
            out << "\\fB" << ManualText(NamesOf(*option)) << "\\fR"
                << (option->get_items_expected_max() != 0
                        ? " \\fI" + ManualText(option->get_type_name()) + "\\fR"
                        : std::string())
                << '\n';
        }
        out << ManualText(option->get_description()) << '\n';
    }
}

void WriteCommand(const CLI::App& command, std::ostream& out)
{
    out << ".SS \"" << ManualText(UsageOf(command)) << "\"\n"
        << ManualText(command.get_description()) << '\n';
    WriteOptions(command, out);
    WriteExamples(Behind(command.get_footer(), ExamplesHead), out);
}

}  // namespace

void WriteManual(const CLI::App& app, std::ostream& out)
{
    const std::string footer = app.get_footer();
    const std::string_view examples = Behind(footer, ExamplesHead);
    const std::string name = ManualText(app.get_name());
    out << ".TH LUMIVAULT\\-CLI 1 \"\" \"Lumivault " << LumivaultVersion << "\" \"User Commands\"\n"
        << ".SH NAME\n"
        << name << " \\- get deleted files back from disks and disk images\n"
        << ".SH SYNOPSIS\n\\fB" << name << "\\fR \\fICOMMAND\\fR [\\fIOPTION\\fR ...]\n"
        << ".SH DESCRIPTION\n"
        << ManualText(app.get_description()) << "\n.SH OPTIONS\n";
    WriteOptions(app, out);
    out << ".SH COMMANDS\n";
    for (const CLI::App* const command :
         app.get_subcommands([](const CLI::App*) { return true; })) {
        WriteCommand(*command, out);
    }
    out << ".SH EXAMPLES\n";
    WriteExamples(examples.substr(0, examples.find("\n\n")), out);
    out << ".SH EXIT STATUS\n"
        << ManualText(Behind(footer, ExitHead)) << '\n'
        << ".SH FILES\n.TP\n\\fI~/.local/share/OrvantaLumivault/ScanLog\\fR\n"
           "records of earlier scans, one folder a scan; \\fB"
        << name << " scans\\fR lists them, \\fBforget\\fR removes them\n"
        << ".SH SEE ALSO\n\\fBlumivault\\fR(1), \\fBddrescue\\fR(1)\n";
}
