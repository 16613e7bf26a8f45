// What the program with windows takes on its command line: one table for its help and its manual page.
#pragma once

#include <iosfwd>

// True when the command line asked for a text only, which out got then.
bool AnswersInWords(int count, char** arguments, std::ostream& out);
