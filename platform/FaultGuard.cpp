#include "platform/FaultGuard.h"

#include "platform/CrashDump.h"

#include <array>
#include <csetjmp>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <sys/mman.h>

namespace {

constexpr std::array Faults = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr std::size_t SignalStackBytes = std::size_t{128} * 1024;  // a dump's frames need some

// Where the thread's guarded work goes on after a fault; null outside of one.
thread_local sigjmp_buf* guardOfThread = nullptr;

extern "C" void OnFault(int number, siginfo_t* details, void* context)
{
    // An abort is a decision of the program, which a jump would not undo.
    if (guardOfThread != nullptr && number != SIGABRT) {
        siglongjmp(*guardOfThread, 1);
    }
    WriteCrashDump(number, *details, context);
    std::signal(number, SIG_DFL);
    std::raise(number);
}

[[noreturn]] void OnTerminate()
{
    if (const std::exception_ptr thrown = std::current_exception()) {
        try {
            std::rethrow_exception(thrown);
        } catch (const std::exception& exception) {
            NoteUncaughtException(exception.what());
        } catch (...) {
            NoteUncaughtException("an exception without a text");
        }
    }
    std::abort();
}

void InstallHandlers()
{
    struct sigaction action = {};
    action.sa_sigaction = &OnFault;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int number : Faults) {
        ::sigaction(number, &action, nullptr);
    }
}

std::once_flag handlersInstalled;

// A thread whose own stack has run over needs another one to notice it on.
class SignalStack
{
public:
    SignalStack()
    {
        stack_t present = {};
        if (::sigaltstack(nullptr, &present) == 0 && (present.ss_flags & SS_DISABLE) == 0) {
            return;  // of a sanitizer, or of a guard around
        }
        void* memory = ::mmap(nullptr, SignalStackBytes, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED) {
            return;
        }
        m_stack.ss_sp = memory;
        m_stack.ss_size = SignalStackBytes;
        m_set = ::sigaltstack(&m_stack, nullptr) == 0;
    }
    SignalStack(const SignalStack&) = delete;
    SignalStack& operator=(const SignalStack&) = delete;
    ~SignalStack()
    {
        if (m_set) {
            stack_t none = {};
            none.ss_flags = SS_DISABLE;
            ::sigaltstack(&none, nullptr);
        }
        if (m_stack.ss_sp != nullptr) {
            ::munmap(m_stack.ss_sp, SignalStackBytes);
        }
    }

private:
    stack_t m_stack = {};
    bool m_set = false;
};

// Takes the mark away on the ordinary way out and when an exception passes.
class GuardMark
{
public:
    explicit GuardMark(sigjmp_buf& place) { guardOfThread = &place; }
    GuardMark(const GuardMark&) = delete;
    GuardMark& operator=(const GuardMark&) = delete;
    ~GuardMark() { guardOfThread = nullptr; }
};

}  // namespace

void InstallFaultHandler(const std::filesystem::path& otherFolder)
{
    static const SignalStack stackOfThisThread;
    PrepareCrashDump(otherFolder);
    std::call_once(handlersInstalled, &InstallHandlers);
    std::set_terminate(&OnTerminate);
}

bool RunWithFaultGuard(const std::function<void()>& work)
{
    std::call_once(handlersInstalled, &InstallHandlers);
    const SignalStack stack;
    sigjmp_buf place;
    // The mask is kept with it: the jump would leave the signal blocked, and the next fault would kill.
    if (sigsetjmp(place, 1) != 0) {
        guardOfThread = nullptr;
        return false;
    }
    const GuardMark mark(place);
    work();
    return true;
}
