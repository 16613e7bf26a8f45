#include "platform/Confinement.h"

#include "platform/FileHandle.h"
#include "platform/SystemFiles.h"

#include <array>
#include <cerrno>
#include <memory>
#include <sched.h>
#include <seccomp.h>
#include <sstream>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

struct ReleaseFilter
{
    void operator()(void* filter) const { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, ReleaseFilter>;

// All that reading, computing and answering takes, by what is open already.
constexpr int AllowedCalls[] = {SCMP_SYS(read),
                                SCMP_SYS(readv),
                                SCMP_SYS(pread64),
                                SCMP_SYS(write),
                                SCMP_SYS(writev),
                                SCMP_SYS(pwrite64),
                                SCMP_SYS(lseek),
                                SCMP_SYS(_llseek),
                                SCMP_SYS(close),
                                SCMP_SYS(fstat),
                                SCMP_SYS(fstat64),
                                SCMP_SYS(poll),
                                SCMP_SYS(ppoll),

                                SCMP_SYS(brk),
                                SCMP_SYS(munmap),
                                SCMP_SYS(mremap),
                                SCMP_SYS(madvise),

                                SCMP_SYS(futex),
                                SCMP_SYS(set_robust_list),
                                SCMP_SYS(rseq),
                                SCMP_SYS(sched_yield),
                                SCMP_SYS(sched_getaffinity),
                                SCMP_SYS(getcpu),
                                SCMP_SYS(sysinfo),
                                SCMP_SYS(getpid),
                                SCMP_SYS(gettid),
                                SCMP_SYS(getrandom),
                                SCMP_SYS(clock_gettime),
                                SCMP_SYS(clock_getres),
                                SCMP_SYS(clock_nanosleep),
                                SCMP_SYS(nanosleep),
                                SCMP_SYS(gettimeofday),
                                SCMP_SYS(time),
                                SCMP_SYS(alarm),
                                SCMP_SYS(setitimer),

                                SCMP_SYS(rt_sigaction),
                                SCMP_SYS(rt_sigprocmask),
                                SCMP_SYS(rt_sigreturn),
                                SCMP_SYS(sigaltstack),
                                SCMP_SYS(restart_syscall),
                                SCMP_SYS(exit),
                                SCMP_SYS(exit_group)};

bool Allow(void* filter)
{
    for (const int call : AllowedCalls) {
        // One that this architecture does not have is left out by the library.
        if (seccomp_rule_add(filter, SCMP_ACT_ALLOW, call, 0) != 0) {
            return false;
        }
    }
    return true;
}

template <typename... Conditions>
bool AllowWhere(void* filter, int call, Conditions... conditions)
{
    const std::array<scmp_arg_cmp, sizeof...(conditions)> all = {conditions...};
    return seccomp_rule_add_array(filter, SCMP_ACT_ALLOW, call, static_cast<unsigned>(all.size()),
                                  all.data()) == 0;
}

scmp_arg_cmp Is(unsigned argument, std::uint64_t value)
{
    return {argument, SCMP_CMP_EQ, value, 0};
}

scmp_arg_cmp HasOf(unsigned argument, std::uint64_t mask, std::uint64_t value)
{
    return {argument, SCMP_CMP_MASKED_EQ, mask, value};
}

// Calls that do more than is wanted, but for their arguments.
bool AllowInPart(void* filter)
{
    constexpr std::uint64_t ThreadFlags = CLONE_THREAD | CLONE_VM | CLONE_NEWUSER | CLONE_NEWNS;
    const auto self = static_cast<std::uint64_t>(::getpid());
    return AllowWhere(filter, SCMP_SYS(recvmsg), Is(0, STDIN_FILENO)) &&
           AllowWhere(filter, SCMP_SYS(sendmsg), Is(0, STDIN_FILENO)) &&
           // Nothing that was written is run, and no other file than one that is open is mapped.
           AllowWhere(filter, SCMP_SYS(mmap), HasOf(2, PROT_EXEC, 0)) &&
           AllowWhere(filter, SCMP_SYS(mmap2), HasOf(2, PROT_EXEC, 0)) &&
           AllowWhere(filter, SCMP_SYS(mprotect), HasOf(2, PROT_EXEC, 0)) &&
           AllowWhere(filter, SCMP_SYS(prctl), Is(0, PR_SET_NAME)) &&
           AllowWhere(filter, SCMP_SYS(tgkill), Is(0, self)) &&
           // Threads, no processes. What the newer call asks for cannot be looked at; the C library takes the older one then.
           AllowWhere(filter, SCMP_SYS(clone), HasOf(0, ThreadFlags, CLONE_THREAD | CLONE_VM)) &&
           seccomp_rule_add(filter, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), 0) == 0;
}

// A program of another architecture of the same processor would call by other numbers: it is ended.
ResultCode Load(const Filter& filter, bool isFilled)
{
    if (!isFilled) {
        return ResultNotSupported;
    }
    const int error = seccomp_load(filter.get());
    return error == 0 ? ResultSuccess : ErrorFromErrno(-error, FileOperation::Open);
}

bool Limit(__rlimit_resource resource, std::uint64_t most)
{
    const rlimit limit = {most, most};
    return ::setrlimit(resource, &limit) == 0;
}

// What it has mapped, shared libraries and all, and what of it can be written to, are counted apart by the system.
ResultCode LimitMemory(std::uint64_t mostBytes)
{
    std::istringstream pages(FirstLineOf("/proc/self/statm"));
    std::uint64_t mapped = 0;
    std::uint64_t data = 0;
    std::uint64_t other = 0;
    pages >> mapped >> other >> other >> other >> other >> data;
    const auto pageBytes = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    if (!pages || !Limit(RLIMIT_AS, mapped * pageBytes + mostBytes) ||
        !Limit(RLIMIT_DATA, data * pageBytes + mostBytes) || !Limit(RLIMIT_CORE, 0)) {
        return ResultGeneralFailure;
    }
    return ResultSuccess;
}

}  // namespace

void CloseInheritedDescriptors()
{
    (void)::close_range(STDERR_FILENO + 1, ~0U,
                        0);  // an older system leaves those that were meant to be
}

ResultCode ConfineToWhatIsOpen(std::uint64_t mostBytes)
{
    if (const ResultCode result = LimitMemory(mostBytes)) {
        return result;
    }
    (void)::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);  // a core, and a look into its memory by others
    const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)));
    return Load(filter, filter != nullptr &&
                            seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1) == 0 &&
                            Allow(filter.get()) && AllowInPart(filter.get()));
}

ResultCode RefuseNetwork()
{
    const Filter filter(seccomp_init(SCMP_ACT_ALLOW));
    const auto refuse = [&filter](scmp_arg_cmp family) {
        return seccomp_rule_add_array(filter.get(), SCMP_ACT_ERRNO(EACCES), SCMP_SYS(socket), 1,
                                      &family) == 0;
    };
    // The system looks at the lower half of the number alone: one with more in the upper half is above, too.
    bool isFilled = filter != nullptr && refuse({0, SCMP_CMP_GT, AF_NETLINK, 0});
    for (std::uint64_t family = 0; family < AF_NETLINK; ++family) {
        isFilled = isFilled && (family == AF_UNIX || refuse(Is(0, family)));
    }
    // A queue of calls that the system carries out by itself, past any filter, and sockets are among them.
    isFilled = isFilled && seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(ENOSYS),
                                            SCMP_SYS(io_uring_setup), 0) == 0;
    return Load(filter, isFilled);
}
