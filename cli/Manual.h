// The manual page, made of the same tables as the help, so that the two cannot tell different things.
#pragma once

#include <iosfwd>

namespace CLI {
class App;
}

// In the form that man reads.
void WriteManual(const CLI::App& app, std::ostream& out);
