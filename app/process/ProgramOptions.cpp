#include "app/process/ProgramOptions.h"

#include "platform/Text.h"
#include "platform/Version.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view Description =
    "Finds deleted and lost photos, audio and video on a drive or in a disk image, and saves\n"
    "them to another drive. Opens a window; lumivault-cli does the same without one.\n"
    "Image files that are named are listed in it, also when the window is open already.\n";

void WriteHelp(std::ostream& out);
void WriteManual(std::ostream& out);

void WriteVersion(std::ostream& out)
{
    out << "lumivault " << LumivaultVersion << '\n';
}

struct ProgramOption
{
    std::string_view shortName;  // empty: none
    std::string_view name;
    std::string_view meaning;  // empty: for the installation, not for people
    void (*write)(std::ostream& out);
};

constexpr std::array<ProgramOption, 3> Options = {{
    {"-h", "--help", "print this help and exit", &WriteHelp},
    {"", "--version", "print the version and exit", &WriteVersion},
    {"", "--write-manual", "", &WriteManual},
}};

std::string NamesOf(const ProgramOption& option)
{
    return (option.shortName.empty() ? "" : std::string(option.shortName) + ", ") +
           std::string(option.name);
}

void WriteHelp(std::ostream& out)
{
    out << "Usage: lumivault [OPTION] [IMAGE...]\n\n" << Description << '\n';
    for (const ProgramOption& option : Options) {
        if (!option.meaning.empty()) {
            out << "  " << std::left << std::setw(15) << NamesOf(option) << option.meaning << '\n';
        }
    }
}

void WriteManual(std::ostream& out)
{
    out << ".TH LUMIVAULT 1 \"\" \"Lumivault " << LumivaultVersion << "\" \"User Commands\"\n"
        << ".SH NAME\nlumivault \\- get deleted photos, audio, video and documents back\n"
        << ".SH SYNOPSIS\n\\fBlumivault\\fR [\\fIOPTION\\fR] [\\fIIMAGE\\fR ...]\n"
        << ".SH DESCRIPTION\n"
        << ManualText(Description) << ".SH OPTIONS\n";
    for (const ProgramOption& option : Options) {
        if (!option.meaning.empty()) {
            out << ".TP\n\\fB" << ManualText(NamesOf(option)) << "\\fR\n"
                << ManualText(option.meaning) << '\n';
        }
    }
    out << ".SH FILES\n.TP\n\\fI~/.local/share/OrvantaLumivault/ScanLog\\fR\n"
           "records of earlier scans, one folder a scan\n"
        << ".TP\n\\fI~/.config/OrvantaLumivault/config.ini\\fR\n"
           "the chosen language\n"
        << ".SH SEE ALSO\n\\fBlumivault\\-cli\\fR(1)\n";
}

}  // namespace

bool AnswersInWords(int count, char** arguments, std::ostream& out)
{
    for (int index = 1; index < count; ++index) {
        const std::string_view argument = arguments[index];
        const auto* const option =
            std::find_if(Options.begin(), Options.end(), [argument](const ProgramOption& one) {
                return argument == one.name ||
                       (!one.shortName.empty() && argument == one.shortName);
            });
        if (option != Options.end()) {
            option->write(out);
            return true;
        }
    }
    return false;
}
