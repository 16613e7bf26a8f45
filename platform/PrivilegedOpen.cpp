#include "platform/PrivilegedOpen.h"

#include "platform/Folders.h"
#include "platform/InstallPaths.h"
#include "platform/MessageChannel.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

// Of the starter: the user dismissed the dialogue, or the system does not let this user ask.
constexpr int ExitDismissed = 126;
constexpr int ExitNotAuthorised = 127;
struct Answer
{
    bool valid = false;  // one whole message with no more than one descriptor
    std::int32_t errorNumber = 0;
    FileHandle device;
};

// Nothing when the other end was closed without one, or has not sent one yet.
std::optional<Answer> Receive(const FileHandle& channel)
{
    Answer answer;
    ReceivedMessage message =
        ReceiveMessage(channel, &answer.errorNumber, sizeof answer.errorNumber);
    if (message.bytes == 0) {
        return std::nullopt;
    }
    answer.valid = !message.isCut && message.bytes == sizeof answer.errorNumber &&
                   message.descriptors.size() == (answer.errorNumber == 0 ? 1U : 0U);
    if (!message.descriptors.empty()) {
        answer.device = std::move(message.descriptors.back());
    }
    return answer;
}

// Ends with an answer, with the end of the child, or with its end of the channel closed, whichever comes first. The child is
// watched too: something that it left behind might keep the channel open for ever.
std::optional<Answer> WaitForAnswer(const FileHandle& channel, pid_t child)
{
    // By its number: the C library's own function for it cannot be linked from C++ everywhere.
    const FileHandle childEnd(static_cast<int>(::syscall(SYS_pidfd_open, child, 0U)));
    std::array<pollfd, 2> waiting = {
        {{channel.Descriptor(), POLLIN, 0}, {childEnd.Descriptor(), POLLIN, 0}}};
    while (::poll(waiting.data(), waiting.size(), -1) < 0) {
        if (errno != EINTR) {
            return std::nullopt;
        }
    }
    return Receive(channel);
}

// -1 when it did not end by itself.
int WaitForEnd(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            return -1;
        }
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// 0 or an errno value. The starter leaves its child the three standard descriptors alone, so the channel is one of them.
int Start(const PrivilegedOpener& opener, const std::string& node, int channel, pid_t* outChild)
{
    std::string starter = opener.starter.string();
    std::string helper = opener.helper.string();
    std::string argument = node;
    std::array<char*, 4> arguments = {starter.data(), helper.data(), argument.data(), nullptr};

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_adddup2(&actions, channel, STDIN_FILENO);
    // What the starter has to say belongs to its own dialogue, not between the caller's results.
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    sigset_t none;
    sigset_t defaults;
    ::sigemptyset(&none);
    ::sigemptyset(&defaults);
    ::sigaddset(&defaults, SIGPIPE);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    const int failure =
        ::posix_spawn(outChild, starter.c_str(), &actions, &attributes, arguments.data(), environ);
    ::posix_spawnattr_destroy(&attributes);
    ::posix_spawn_file_actions_destroy(&actions);
    return failure;
}

// The helper is trusted, but a mistake there must not end in a device that can be written, or in the wrong one.
bool IsThatDevice(const FileHandle& device, dev_t number)
{
    struct stat status = {};
    const int flags = ::fcntl(device.Descriptor(), F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) == O_RDONLY && (flags & O_PATH) == 0 &&
           ::fstat(device.Descriptor(), &status) == 0 && S_ISBLK(status.st_mode) &&
           status.st_rdev == number;
}

ResultCode ResultWithoutAnswer(int exitStatus)
{
    return exitStatus == ExitDismissed || exitStatus == ExitNotAuthorised ? ResultAccessDenied
                                                                          : ResultGeneralFailure;
}

}  // namespace

PrivilegedOpener::PrivilegedOpener()
    : starter("/usr/bin/pkexec"), helper(InstalledPath(HelperBelowPrefix))
{
}

ResultCode OpenDevicePrivileged(const std::filesystem::path& node,
                                FileHandle& outHandle,
                                const PrivilegedOpener& opener)
{
    // The helper follows no links: what they lead to is for the user's own rights to say.
    std::error_code failed;
    const std::filesystem::path resolved = std::filesystem::canonical(node, failed);
    struct stat status = {};
    if (failed || ::stat(resolved.c_str(), &status) != 0) {
        return ErrorFromErrno(failed ? failed.value() : errno, FileOperation::Open);
    }
    if (!S_ISBLK(status.st_mode)) {
        return ResultInvalidParameter;
    }
    if (::access(opener.starter.c_str(), X_OK) != 0 || ::access(opener.helper.c_str(), X_OK) != 0) {
        return ResultNotSupported;
    }
    FileHandle ours;
    FileHandle theirs;
    if (const ResultCode result = MakeChannel(ours, theirs)) {
        return result;
    }
    pid_t child = -1;
    const int failure = Start(opener, resolved.string(), theirs.Descriptor(), &child);
    theirs.Close();
    if (failure != 0) {
        return ErrorFromErrno(failure, FileOperation::Open);
    }
    std::optional<Answer> answer = WaitForAnswer(ours, child);
    const int exitStatus = WaitForEnd(child);
    if (!answer) {
        return ResultWithoutAnswer(exitStatus);
    }
    if (!answer->valid) {
        return ResultGeneralFailure;
    }
    if (answer->errorNumber != 0) {
        return ErrorFromErrno(answer->errorNumber, FileOperation::Open);
    }
    if (!IsThatDevice(answer->device, status.st_rdev)) {
        return ResultGeneralFailure;
    }
    outHandle = std::move(answer->device);
    return ResultSuccess;
}
