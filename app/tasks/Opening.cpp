#include "app/tasks/Opening.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

// How long a wish to stop may go unnoticed.
constexpr std::chrono::milliseconds Step(20);

struct Pending
{
    std::mutex lock;
    std::condition_variable hasCome;
    std::optional<OpenOutcome> outcome;
    bool isLeft = false;
};

// Nobody is there who would catch what it throws.
OpenOutcome Guarded(const std::function<OpenOutcome()>& open)
{
    try {
        return open();
    } catch (...) {
        OpenOutcome outcome;
        outcome.end = OpenEnd::Refused;
        outcome.refusal.fault = TargetFault::OutOfMemory;
        outcome.refusal.why = ResultOutOfMemory;
        return outcome;
    }
}

}  // namespace

std::optional<OpenOutcome> OpenUnless(const std::function<bool()>& isToStop,
                                      const std::function<OpenOutcome()>& open)
{
    const auto pending = std::make_shared<Pending>();
    std::thread([pending, open] {
        OpenOutcome outcome = Guarded(open);
        const std::lock_guard held(pending->lock);
        if (!pending->isLeft) {
            pending->outcome = std::move(outcome);
        }
        pending->hasCome.notify_one();
    }).detach();
    std::unique_lock held(pending->lock);
    while (!pending->outcome) {
        if (isToStop()) {
            pending->isLeft = true;
            return std::nullopt;
        }
        pending->hasCome.wait_for(held, Step);
    }
    return std::move(pending->outcome);
}
