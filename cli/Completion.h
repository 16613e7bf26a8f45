// What may stand next in a command line that is being typed, for the completions of shells.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace CLI {
class App;
}

class Session;

// words: what follows the program's name up to the cursor; the last is the one being typed, and may be empty. A line
// for each: the word, then a tab and what it means where that is known. "FILES" or "FOLDERS" alone on the last line: paths may
// stand there too.
void WriteCompletions(const CLI::App& app,
                      std::vector<std::string> words,
                      Session& session,
                      std::ostream& out);
