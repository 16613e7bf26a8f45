// What every command of lumivault-cli shares: its options, its streams, its exit status, its row in the table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

class Session;

enum class ExitStatus : int
{
    Done = 0,
    SomeFailed = 1,    // files that could not be restored, or not whole
    WrongUse = 2,      // the command line, or a destination that may not be written
    TargetFailed = 3,  // it could not be opened or scanned
    Cancelled = 130
};

// Why a command does not go on: one sentence that also says what to do about it.
struct Refusal
{
    ExitStatus status = ExitStatus::WrongUse;
    std::string sentence;
};

struct CommandOptions
{
    std::string target;
    std::filesystem::path folder;
    std::string types = "photo,audio,video";
    std::filesystem::path imageFile;   // that image makes
    std::filesystem::path dataFolder;  // empty: the user's own
    std::string scanNumber;            // of forget
    bool fast = false;
    bool whole = false;
    bool asOnePiece = false;
    bool resume = false;
    bool againUnread = false;
    bool fresh = false;
    bool all = false;
    bool tree = false;
    bool json = false;
    bool force = false;
    bool quiet = false;
    bool again = false;
    bool fillUnreadable = false;
    bool rescue = false;
    bool doubles = false;
    std::uint32_t retries = 0;
};

struct CommandStreams
{
    std::ostream& out;
    std::ostream& err;
    bool errIsTerminal = false;
    std::istream* answers = nullptr;  // where a person answers questions; null when there is nobody
    std::size_t (*columns)() = nullptr;  // of the terminal at err; 0 or null when it does not tell
};

struct Command
{
    std::string_view name;
    std::string_view help;
    std::string_view examples;
    void (*addOptions)(CLI::App& app, CommandOptions& options);
    ExitStatus (*run)(const CommandOptions& options, CommandStreams& streams, Session& session);
};

extern const Command TargetsCommand;
extern const Command ScanCommand;
extern const Command ListCommand;
extern const Command RecoverCommand;
extern const Command ScansCommand;
extern const Command ForgetCommand;
extern const Command ImageCommand;

// Options that several commands take.
void AddTargetOption(CLI::App& app, CommandOptions& options);
// The target, and how it is scanned.
void AddScanOptions(CLI::App& app, CommandOptions& options);
void AddTypesOption(CLI::App& app, CommandOptions& options);
void AddJsonOption(CLI::App& app, CommandOptions& options);

// The line that is typed for a question; answers must be there.
std::string ReadAnswer(const std::string& question, CommandStreams& streams);
// Asks whoever sits at the terminal a question that is answered by no unless yes is typed; with nobody there it is no.
bool Ask(const std::string& question, CommandStreams& streams);

// Writes "lumivault-cli: <sentence>" and gives the status.
ExitStatus Refuse(const Refusal& refusal, CommandStreams& streams);
