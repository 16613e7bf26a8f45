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

std::string
ReasonOf(const TargetRefusal& refusal, LanguageSection& desktop, LanguageSection& extras)
{
    if (refusal.fault == TargetFault::OutOfMemory) {
        return extras.Get("EXT0236");
    }
    switch (refusal.why) {
    case ResultAccessDenied:
    case ResultNotSupported:  // there is nobody who could ask an administrator
        return refusal.isImage ? extras.Get("EXT0231") : desktop.Get("DSK0203");
    case ResultFileNotFound:
    case ResultPathNotFound:
    case ResultNotConnected:
    case ResultNoMedium:
        return extras.Get("EXT0232");
    case ResultShortRead:
    case ResultInvalidParameter:  // less than a sector
        return extras.Get("EXT0233");
    case ResultBusy:
    case ResultLocked:
        return extras.Get("EXT0234");
    case ResultReadFault:
    case ResultDeviceFault:
        return extras.Get("EXT0235");
    case ResultOutOfMemory:
        return extras.Get("EXT0236");
    default:
        return FormatText(extras.Get("EXT0237"), ErrorText(refusal.why));
    }
}

std::string RemarkOnEarlier(const EarlierScan& earlier, LanguageSection& extras)
{
    std::string remark;
    if (earlier.state != EarlierState::Complete) {
        remark =
            FormatText(extras.Get(earlier.state == EarlierState::Stopped ? "EXT0201" : "EXT0202"),
                       earlier.percent);
    }
    if (earlier.unreadSectors != 0) {
        remark +=
            (remark.empty() ? "" : "\n") + FormatText(extras.Get("EXT0203"), earlier.unreadSectors);
    }
    return remark;
}
