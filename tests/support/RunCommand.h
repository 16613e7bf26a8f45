// Running other programs without a shell.
#pragma once

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>
#include <vector>

struct CommandResult
{
    int exitStatus = -1;  // 128 + signal when a signal ended it; 127 when it could not be started
    std::string out;
    std::string err;
};

// A program on its way. Killed when it was not waited for.
class ChildProcess
{
public:
    // The program is looked for in PATH and the system's sbin folders. Extra environment as NAME=VALUE.
    explicit ChildProcess(const std::vector<std::string>& arguments,
                          const std::vector<std::string>& environment = {});
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess();

    int Number() const { return m_process; }
    void Signal(int number) const;
    CommandResult Wait();

private:
    using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

    File m_out;
    File m_err;
    pid_t m_process = -1;
};

CommandResult RunCommand(const std::vector<std::string>& arguments,
                         const std::vector<std::string>& environment = {});
// The same, but a failure throws with what the program said.
std::string MustRun(const std::vector<std::string>& arguments,
                    const std::vector<std::string>& environment = {});

// Empty when all are installed, else a sentence that names the first one missing: for GTEST_SKIP().
std::string MissingTool(std::initializer_list<std::string_view> tools);
// The first of these that is installed, with its path; empty when none is.
std::filesystem::path FindTool(std::initializer_list<std::string_view> tools);
