// The terminal that a command-line program may or may not have.
#pragma once

#include <cstddef>

// Standard error goes to a terminal, so that a line that rewrites itself can be read.
bool StandardErrorIsTerminal();
// Its columns; 0 when it is none or does not tell.
std::size_t StandardErrorColumns();
// Standard input comes from a terminal, so that somebody can be asked.
bool StandardInputIsTerminal();
// Whoever read what standard output is piped into has gone.
bool StandardOutputHasNoReader();
// A standard stream that was closed before the start leads nowhere from now on: the next file opened would get its number,
// and what is printed with it.
void OpenStandardStreams();
