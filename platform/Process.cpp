#include "platform/Process.h"

#include "platform/SystemFiles.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

// The lists that a start needs, given back on every way out.
class SpawnPlan
{
public:
    SpawnPlan()
    {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
        sigset_t none;
        sigemptyset(&none);
        // A group of its own: a Ctrl-C in the terminal is for this program alone.
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
        ::posix_spawnattr_setpgroup(&m_attributes, 0);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan()
    {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }

    void UseNothing(int descriptor)
    {
        ::posix_spawn_file_actions_addopen(&m_actions, descriptor, "/dev/null", O_RDWR, 0);
    }
    void Use(int descriptor, int given)
    {
        ::posix_spawn_file_actions_adddup2(&m_actions, given, descriptor);
    }
    const posix_spawn_file_actions_t* Actions() const { return &m_actions; }
    const posix_spawnattr_t* Attributes() const { return &m_attributes; }

private:
    posix_spawn_file_actions_t m_actions = {};
    posix_spawnattr_t m_attributes = {};
};

namespace {

constexpr std::size_t LongestProcessName = 15;

std::optional<std::int32_t> NumberOf(const std::string& name)
{
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    return error == std::errc() && end == name.data() + name.size() && number > 0
               ? std::optional(number)
               : std::nullopt;
}

bool IsOwnProcessOfName(const std::filesystem::path& folder, std::string_view name)
{
    struct stat status = {};
    if (::stat(folder.c_str(), &status) != 0 || status.st_uid != ::geteuid()) {
        return false;
    }
    return FirstLineOf(folder / "comm") == name.substr(0, LongestProcessName);
}

}  // namespace

std::int32_t ProcessNumber()
{
    return ::getpid();
}

std::uint32_t UserNumber()
{
    return ::geteuid();
}

std::optional<std::uint32_t> UserAtOtherEnd(int socket)
{
    ::ucred other = {};
    ::socklen_t size = sizeof other;
    const int failed = ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &other, &size);
    return failed == 0 && size == sizeof other ? std::optional<std::uint32_t>(other.uid)
                                               : std::nullopt;
}

void RaiseOpenFileLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        (void)::setrlimit(RLIMIT_NOFILE,
                          &limit);  // with fewer, parts that cannot be opened are told
    }
}

bool ProcessIsAlive(std::int32_t number)
{
    return ::kill(number, 0) == 0 || errno != ESRCH;
}

ResultCode KillProcessByName(std::string_view name)
{
    std::error_code error;
    std::filesystem::directory_iterator at("/proc", error);
    for (; !error && at != std::filesystem::directory_iterator(); at.increment(error)) {
        const std::optional<std::int32_t> number = NumberOf(at->path().filename().string());
        if (number && IsOwnProcessOfName(at->path(), name)) {
            ::kill(*number, SIGKILL);
        }
    }
    return error ? ErrorFromErrno(error.value(), FileOperation::Query) : ResultSuccess;
}

void IgnoreBrokenPipes()
{
    std::signal(SIGPIPE, SIG_IGN);
}

LaunchedProgram::LaunchedProgram(LaunchedProgram&& other) noexcept
    : m_number(std::exchange(other.m_number, 0)),
      m_ended(other.m_ended),
      m_killed(other.m_killed),
      m_output(std::move(other.m_output))
{
}

ResultCode LaunchedProgram::Start(const std::filesystem::path& program,
                                  const std::vector<std::string>& arguments,
                                  bool keepsOutput)
{
    SpawnPlan plan;
    FileHandle readEnd;
    FileHandle writeEnd;
    plan.UseNothing(STDIN_FILENO);
    if (keepsOutput) {
        std::array<int, 2> ends = {};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            return ErrorFromErrno(errno, FileOperation::Open);
        }
        readEnd = FileHandle(ends[0]);
        writeEnd = FileHandle(ends[1]);
        plan.Use(STDOUT_FILENO, writeEnd.Descriptor());
        plan.Use(STDERR_FILENO, writeEnd.Descriptor());
    } else {
        plan.UseNothing(STDOUT_FILENO);
        plan.UseNothing(STDERR_FILENO);
    }
    if (const ResultCode result = Spawn(program, arguments, plan)) {
        return result;
    }
    m_output = std::move(readEnd);
    return ResultSuccess;
}

ResultCode LaunchedProgram::StartOnChannel(const std::filesystem::path& program,
                                           const FileHandle& channel)
{
    SpawnPlan plan;
    plan.Use(STDIN_FILENO, channel.Descriptor());
    plan.UseNothing(STDOUT_FILENO);
    plan.UseNothing(STDERR_FILENO);
    return Spawn(program, {}, plan);
}

ResultCode LaunchedProgram::Spawn(const std::filesystem::path& program,
                                  const std::vector<std::string>& arguments,
                                  const SpawnPlan& plan)
{
    std::string name = program.filename().string();
    std::vector<std::string> texts = arguments;
    std::vector<char*> pointers = {name.data()};
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    pid_t number = 0;
    const int error = ::posix_spawn(&number, program.c_str(), plan.Actions(), plan.Attributes(),
                                    pointers.data(), environ);
    if (error != 0) {
        return ErrorFromErrno(error, FileOperation::Open);
    }
    m_number = number;
    return ResultSuccess;
}

void LaunchedProgram::Kill()
{
    if (IsStarted() && !m_ended) {
        ::kill(m_number, SIGKILL);
        constexpr int EndMilliseconds = 5000;  // one that the system holds back ends later
        (void)HasEnded(EndMilliseconds);
    }
}

bool LaunchedProgram::HasEnded(int waitMilliseconds)
{
    constexpr int StepMilliseconds = 5;
    for (int waited = 0; !m_ended; waited += StepMilliseconds) {
        int status = 0;
        const pid_t ended = ::waitpid(m_number, &status, WNOHANG);
        // Nobody else waits for it, so an error too means that it is no more.
        if (ended == m_number || (ended < 0 && errno != EINTR)) {
            m_ended = true;
            m_killed = ended == m_number && WIFSIGNALED(status);
        } else if (waited >= waitMilliseconds) {
            break;
        } else {
            std::this_thread::sleep_for(
                std::chrono::milliseconds(std::min(StepMilliseconds, waitMilliseconds - waited)));
        }
    }
    return m_ended;
}

std::optional<std::size_t> LaunchedProgram::AvailableOutput() const
{
    pollfd state = {m_output.Descriptor(), POLLIN, 0};
    int bytes = 0;
    if (!m_output.IsOpen() || ::poll(&state, 1, 0) < 0 ||
        ::ioctl(m_output.Descriptor(), FIONREAD, &bytes) != 0) {
        return std::nullopt;
    }
    const bool broken = bytes == 0 && (state.revents & (POLLHUP | POLLERR)) != 0;
    return broken ? std::nullopt : std::optional(static_cast<std::size_t>(bytes));
}

std::vector<std::uint8_t> LaunchedProgram::ReadOutput(std::size_t mostBytes) const
{
    std::vector<std::uint8_t> bytes(mostBytes);
    const ssize_t read = ::read(m_output.Descriptor(), bytes.data(), bytes.size());
    bytes.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    return bytes;
}
