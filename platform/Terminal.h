// The terminal that a command-line program may or may not have.
#pragma once

// Standard error goes to a terminal, so that a line that rewrites itself can be read.
bool StandardErrorIsTerminal();
// Standard input comes from a terminal, so that somebody can be asked.
bool StandardInputIsTerminal();
