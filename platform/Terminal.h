// The terminal that a command-line program may or may not have.
#pragma once

// Standard error goes to a terminal, so that a line that rewrites itself can be read.
bool StandardErrorIsTerminal();
