// Faults made on purpose: guarded ones in this process, the others in one that dies of them.
#include "platform/FaultGuard.h"

#include "platform/Folders.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

volatile int* volatile nowhere = nullptr;
volatile int zero = 0;
volatile int seven = 7;
volatile int sink = 0;

// The end of it is never reached.
int RunOver(int depth)  // NOLINT(misc-no-recursion)
{
    volatile char room[4096] = {};
    room[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : RunOver(depth + 1) + room[0];
}

// A sanitizer would end these before the hardware does.
[[gnu::no_sanitize("undefined")]] void WriteToNowhere()
{
    *nowhere = 1;
}

[[gnu::no_sanitize("undefined")]] void DivideByZero()
{
    sink = seven / zero;
}

struct FaultCase
{
    const char* name;
    std::function<void()> work;
};

const FaultCase Faults[] = {
    {"a write to nowhere", &WriteToNowhere},
    {"a bus error", [] { std::raise(SIGBUS); }},
    {"a division by zero", &DivideByZero},
    {"a stack that runs over", [] { sink = RunOver(0); }},
};

TEST(FaultGuardTest, AFaultEndsTheGuardedWorkAlone)
{
    for (int round = 0; round < 3; ++round) {
        for (const FaultCase& fault : Faults) {
            EXPECT_FALSE(RunWithFaultGuard(fault.work)) << fault.name;
            bool guarded = true;
            std::thread([&] { guarded = RunWithFaultGuard(fault.work); }).join();
            EXPECT_FALSE(guarded) << fault.name << " on a thread";
        }
    }
    EXPECT_TRUE(RunWithFaultGuard([] { sink = 5; }));
    EXPECT_EQ(sink, 5);
}

TEST(FaultGuardTest, AnExceptionPassesThroughAndLeavesTheGuardUsable)
{
    EXPECT_THROW(RunWithFaultGuard([] { throw std::runtime_error("x"); }), std::runtime_error);
    EXPECT_FALSE(RunWithFaultGuard(Faults[0].work));
}

struct Crash
{
    int signalNumber = 0;
    std::string dumpName;
    std::string dump;
};

// Lets a process of its own crash in a folder, with another one to fall back to.
Crash CrashIn(const std::filesystem::path& here,
              const std::filesystem::path& other,
              const std::function<void()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (::chdir(here.c_str()) == 0) {
            InstallFaultHandler(other);
            work();
        }
        ::_exit(0);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    Crash crash;
    crash.signalNumber = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    for (const auto& folder : {here, other}) {
        std::error_code isGone;
        for (const auto& entry : std::filesystem::directory_iterator(folder, isGone)) {
            crash.dumpName = entry.path().filename().string();
            const ByteVector bytes = ReadFileBytes(entry.path());
            crash.dump.assign(bytes.begin(), bytes.end());
        }
    }
    return crash;
}

TEST(FaultGuardTest, AnUnguardedFaultLeavesADumpThatTellsWhere)
{
    const TempFolder here;
    const TempFolder other;
    const Crash crash = CrashIn(here.Path(), other.Path(), Faults[0].work);
    EXPECT_EQ(crash.signalNumber, SIGSEGV);
    // "2026-05-07-08-09-10-123.dmp"
    std::string shape = crash.dumpName;
    std::replace_if(
        shape.begin(), shape.end(), [](char one) { return one >= '0' && one <= '9'; }, '#');
    EXPECT_TRUE(shape == "####-##-##-##-##-##-##.dmp" || shape == "####-##-##-##-##-##-###.dmp")
        << crash.dumpName;
    for (const char* part :
         {"signal 11\n", "address 0000000000000000\n", "\nbuild ", "platform_tests(", "[stack]"}) {
        EXPECT_NE(crash.dump.find(part), std::string::npos) << part << " in\n" << crash.dump;
    }
}

TEST(FaultGuardTest, AnUncaughtExceptionIsNamedInADumpInTheOtherFolder)
{
    const TempFolder here;
    const TempFolder other;
    const auto gone = here / "gone";
    std::filesystem::create_directory(gone);
    const Crash crash = CrashIn(gone, other.Path(), [&gone] {
        std::filesystem::remove(gone);
        std::thread([] { throw std::runtime_error("told why"); }).join();
    });
    EXPECT_EQ(crash.signalNumber, SIGABRT);
    EXPECT_NE(crash.dump.find("exception told why\n"), std::string::npos) << crash.dump;
}

}  // namespace
