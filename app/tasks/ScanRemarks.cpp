#include "app/tasks/ScanRemarks.h"

#include "texts/LanguageSection.h"
#include "texts/TextFormat.h"

#include <algorithm>

namespace {

// A stop by the user is no fault: he knows that what follows is not all.
bool MetFault(const ScanOutcome& outcome)
{
    return outcome.end == ScanEnd::Incomplete || outcome.end == ScanEnd::Failed ||
           outcome.end == ScanEnd::Broken ||
           (outcome.end == ScanEnd::Complete && outcome.quickFault != ResultSuccess);
}

}  // namespace

std::vector<std::string> ScanRemarks(const std::vector<ScanOutcome>& outcomes,
                                     LanguageSection& desktop)
{
    std::vector<std::string> remarks;
    const auto any = [&outcomes](const auto& holds) {
        return std::any_of(outcomes.begin(), outcomes.end(), holds);
    };
    if (any([](const ScanOutcome& one) { return one.end == ScanEnd::Interrupted; })) {
        remarks.push_back(desktop.Get("DSK0110"));
    }
    if (any(&MetFault)) {
        remarks.push_back(desktop.Get("DSK0111"));
    }
    std::uint64_t lost = 0;
    std::uint64_t unread = 0;
    for (const ScanOutcome& outcome : outcomes) {
        lost += outcome.lostRecords;
        unread += outcome.unreadSectors;
    }
    if (lost != 0) {
        remarks.push_back(FormatText(desktop.Get("DSK0112"), lost));
    } else if (any([](const ScanOutcome& one) { return one.whyLost != ResultSuccess; })) {
        remarks.push_back(desktop.Get("DSK0113"));
    }
    if (unread != 0) {
        remarks.push_back(FormatText(desktop.Get("DSK0114"), unread));
    }
    return remarks;
}
