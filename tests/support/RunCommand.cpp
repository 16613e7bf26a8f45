#include "tests/support/RunCommand.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Programs that make file systems stand in folders that are not in every user's PATH.
std::string SearchPath()
{
    const char* path = std::getenv("PATH");
    return (path != nullptr ? std::string(path) + ":" : std::string()) +
           "/usr/sbin:/sbin:/usr/bin:/bin";
}

std::string ReadFromStart(std::FILE* file)
{
    std::rewind(file);
    std::string text;
    std::array<char, 4096> piece = {};
    for (std::size_t got = 0; (got = std::fread(piece.data(), 1, piece.size(), file)) > 0;) {
        text.append(piece.data(), got);
    }
    return text;
}

std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> Environment(std::vector<std::string> extra)
{
    // Names of files are UTF-8 whatever the machine's language is; some programs write "_" for them otherwise.
    extra.emplace_back("LC_ALL=C.UTF-8");
    std::vector<std::string> out = extra;
    for (char** at = environ; *at != nullptr; ++at) {
        const std::string_view entry = *at;
        const std::string_view name = entry.substr(0, entry.find('=') + 1);
        bool replaced = false;
        for (const std::string& own : extra) {
            replaced = replaced || own.starts_with(name);
        }
        if (!replaced) {
            out.emplace_back(entry);
        }
    }
    return out;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment)
    : m_out(std::tmpfile(), &std::fclose), m_err(std::tmpfile(), &std::fclose)
{
    if (m_out == nullptr || m_err == nullptr) {
        throw std::runtime_error("no temporary file for a program's output");
    }
    const std::string& name = arguments.at(0);
    const std::string program =
        name.find('/') == std::string::npos ? FindTool({name}).string() : name;
    std::vector<std::string> own = arguments;
    std::vector<std::string> variables = Environment(environment);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&actions, ::fileno(m_out.get()), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, ::fileno(m_err.get()), STDERR_FILENO);
    const int failed = ::posix_spawn(&m_process, program.c_str(), &actions, nullptr,
                                     Pointers(own).data(), Pointers(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) {
        m_process = -1;
    }
}

ChildProcess::~ChildProcess()
{
    if (m_process > 0) {
        Signal(SIGKILL);
        (void)Wait();
    }
}

void ChildProcess::Signal(int number) const
{
    if (m_process > 0) {
        ::kill(m_process, number);
    }
}

CommandResult ChildProcess::Wait()
{
    CommandResult result;
    result.exitStatus = 127;
    int status = 0;
    while (m_process > 0 && ::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    if (m_process > 0) {
        result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    m_process = -1;
    result.out = ReadFromStart(m_out.get());
    result.err = ReadFromStart(m_err.get());
    return result;
}

CommandResult RunCommand(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment)
{
    return ChildProcess(arguments, environment).Wait();
}

std::string MustRun(const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment)
{
    CommandResult result = RunCommand(arguments, environment);
    if (result.exitStatus != 0) {
        std::string line;
        for (const std::string& argument : arguments) {
            line += argument + " ";
        }
        throw std::runtime_error(line + "ended with " + std::to_string(result.exitStatus) + ": " +
                                 result.err + result.out);
    }
    return std::move(result.out);
}

std::filesystem::path FindTool(std::initializer_list<std::string_view> tools)
{
    const std::string folders = SearchPath();
    for (const std::string_view tool : tools) {
        for (std::size_t at = 0; at < folders.size();) {
            const std::size_t end = std::min(folders.find(':', at), folders.size());
            const std::filesystem::path path =
                std::filesystem::path(folders.substr(at, end - at)) / tool;
            if (::access(path.c_str(), X_OK) == 0) {
                return path;
            }
            at = end + 1;
        }
    }
    return {};
}

std::string MissingTool(std::initializer_list<std::string_view> tools)
{
    for (const std::string_view tool : tools) {
        if (FindTool({tool}).empty()) {
            return std::string(tool) + " is not installed; tools/setup test installs it";
        }
    }
    return {};
}
