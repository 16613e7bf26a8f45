// The whole program behind main: parses the arguments, finds the command, runs it.
#pragma once

#include "cli/Command.h"

#include <string>
#include <vector>

// The arguments without the program's name.
ExitStatus
RunCommandLine(std::vector<std::string> arguments, CommandStreams& streams, Session& session);
