// Which processes there are, how programs are started beside this one, and how they are ended.
#pragma once

#include "platform/FileHandle.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Of this one.
std::int32_t ProcessNumber();
// Of the user that this process acts as.
std::uint32_t UserNumber();
// That the process at the other end of a local socket acted as when it connected, or listened. Nothing for what is no such
// socket.
std::optional<std::uint32_t> UserAtOtherEnd(int socket);
// As many files as the system allows it may be open at once: a table of partitions can have hundreds of rows.
void RaiseOpenFileLimit();
// Also one of another user.
bool ProcessIsAlive(std::int32_t number);
// Kills every process of this user that has that name, by its first 15 bytes, which is what the system keeps of it. The
// system's error when it does not list its processes; one that cannot be killed is passed over.
[[nodiscard]] ResultCode KillProcessByName(std::string_view name);
// A pipe whose reader is gone gives an error from now on, here and in programs that are started later, and ends nobody.
void IgnoreBrokenPipes();

class SpawnPlan;

// A program that runs beside this one and may outlive it. Its standard input is empty, but for one that is started on a channel.
class LaunchedProgram
{
public:
    LaunchedProgram() = default;
    LaunchedProgram(LaunchedProgram&& other) noexcept;
    LaunchedProgram& operator=(LaunchedProgram&&) = delete;
    LaunchedProgram(const LaunchedProgram&) = delete;
    LaunchedProgram& operator=(const LaunchedProgram&) = delete;
    // Leaves it running.
    ~LaunchedProgram() = default;

    // With keepsOutput both of its output streams go to a pipe, else nowhere. The program's name is the last part of the path.
    [[nodiscard]] ResultCode Start(const std::filesystem::path& program,
                                   const std::vector<std::string>& arguments,
                                   bool keepsOutput);
    // Its standard input is that channel, and what it writes goes nowhere.
    [[nodiscard]] ResultCode StartOnChannel(const std::filesystem::path& program,
                                            const FileHandle& channel);
    // At once; waits for its end.
    void Kill();

    bool IsStarted() const { return m_number > 0; }
    // Waits that long, in milliseconds, for its end. Once true it stays true.
    bool HasEnded(int waitMilliseconds = 0);
    // A signal has ended it, as KillProcessByName() does. Only after its end.
    bool WasKilled() const { return m_killed; }

    // Bytes that can be read now; nothing when the pipe is broken.
    std::optional<std::size_t> AvailableOutput() const;
    // At most that many; empty when none came.
    std::vector<std::uint8_t> ReadOutput(std::size_t mostBytes) const;
    // What it writes from then on is its own affair.
    void CloseOutput() { m_output.Close(); }

private:
    [[nodiscard]] ResultCode Spawn(const std::filesystem::path& program,
                                   const std::vector<std::string>& arguments,
                                   const SpawnPlan& plan);

    std::int32_t m_number = 0;
    bool m_ended = false;
    bool m_killed = false;
    FileHandle m_output;
};
