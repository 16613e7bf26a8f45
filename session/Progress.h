// How far a task is, as a face hears of it, and how a face stops it.
#pragma once

#include <cstdint>
#include <functional>

enum class Answer
{
    GoOn,
    Stop,
    // Of a scan that was stopped also what would still give its findings their places. It counts as killed: nothing is
    // saved to go on with. Everything else takes it for Stop.
    StopAtOnce
};

struct Progress
{
    std::int32_t percent = 0;  // of the whole task, 0 to 100
    // The share of the task that its present part ends at: 9 for the quick part of a deep scan, 90 for its pass, 100 for
    // what has no parts.
    std::int32_t range = 100;
    std::int32_t secondsLeft =
        -1;  // negative when not known; of the quick part alone where range is below 90
    std::uint64_t done = 0;        // sectors, or disks of a list
    std::uint64_t total = 0;       // 0 when not known
    std::uint64_t found = 0;       // files
    std::uint64_t unreadable = 0;  // sectors
};

// Called on the thread that runs the task, which stands still until it has answered.
using ProgressFunction = std::function<Answer(const Progress&)>;

// What a part of a task has done, as whole percent of the task.
std::int32_t WholePercent(std::int32_t partPercent, std::int32_t range);
