// lumivault-cli: the engines for terminals, scripts and machines without a screen.
#include "cli/CommandLine.h"
#include "platform/Process.h"
#include "platform/Terminal.h"
#include "session/Session.h"

#include <csignal>
#include <exception>
#include <iostream>

int main(int count, char** arguments)
{
    try {
        std::signal(SIGXFSZ, SIG_IGN);  // a limit on the size of files is an error like a full disk
        std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone stops no restoring
        OpenStandardStreams();
        RaiseOpenFileLimit();
        std::ios::sync_with_stdio(false);
        CommandStreams streams{std::cout, std::cerr, StandardErrorIsTerminal(), nullptr,
                               &StandardErrorColumns};
        if (streams.errIsTerminal && StandardInputIsTerminal()) {
            streams.answers = &std::cin;
        }
        Session::AskForRights();
        Session session;
        const ExitStatus status =
            RunCommandLine({arguments + 1, arguments + count}, streams, session);
        std::cout.flush();
        if (!std::cout && !StandardOutputHasNoReader()) {
            std::cerr << "lumivault-cli: standard output could not be written.\n";
            return static_cast<int>(ExitStatus::WrongUse);
        }
        return static_cast<int>(status);
    } catch (const std::exception& error) {
        std::cerr << "lumivault-cli: " << error.what() << '\n';
        return static_cast<int>(ExitStatus::TargetFailed);
    }
}
