// What the scan of a target and of its parts has come to: in words, as a sum, as a status.
#include "cli/ScanRun.h"
#include "cli/TextForms.h"
#include "cli/Words.h"

#include <algorithm>

// What the scan of a part has come to, in words. A refusal when nothing came of it.
std::optional<Refusal> ScanRun::TakeOutcome(ScanPart& part)
{
    m_line.Clear();
    const ScanOutcome& outcome = part.outcome;
    part.state = PartState::Scanned;
    switch (outcome.end) {
    case ScanEnd::Complete:
        break;
    case ScanEnd::Stopped:
    case ScanEnd::StoppedAtOnce:  // what a second Ctrl-C does by ending the process
        m_cancelled = true;
        Warn(outcome.canGoOn
                 ? "Cancelled; what was found until then is kept, and --resume goes on from there."
                 : "Cancelled; what was found until then is kept.");
        break;
    case ScanEnd::Interrupted:
        m_interrupted = true;
        part.isMissing = true;
        Warn(std::string("The source went away while it was read") +
             (outcome.canGoOn ? "; put it back, and --resume goes on where it was." : "."));
        break;
    case ScanEnd::Incomplete:
        part.isMissing = part.row.has_value();
        Warn("Warning: " + About(part) + "the scan met a fault and may be incomplete: " +
             ErrorText(outcome.why) + WhatElse(m_options));
        break;
    case ScanEnd::Failed:
        part.state = PartState::Failed;
        part.isMissing = true;
        return WhyFailed(part);
    case ScanEnd::Broken:
        part.state = PartState::Failed;
        part.isMissing = true;
        return WhyBroken(outcome.why);
    }
    if (m_options.whole && outcome.quickFault != ResultSuccess) {
        Warn("Warning: " + About(part) + "what the file system knows could not all be read: " +
             ErrorText(outcome.quickFault) + " All sectors were read all the same.");
    }
    return std::nullopt;
}

Refusal ScanRun::WhyFailed(const ScanPart& part) const
{
    const std::string name = part.row ? NameOfPart(*part.row) : Printable(m_options.target);
    return {ExitStatus::TargetFailed,
            name + ": it could not be scanned: " + ErrorText(part.outcome.why) +
                WhatElse(m_options) +
                (m_target.IsImage() ? ""
                                    : " Of a failing disk make an image with 'image --rescue', and "
                                      "scan that.")};
}

void ScanRun::TellLosses()
{
    const ScanOutcome scanned = Scanned();
    if (scanned.lostRecords != 0) {
        Warn(CountText(scanned.lostRecords, "record") + " could not be saved and are missing: " +
             ErrorText(scanned.whyLost) + " Give --data-dir a folder with more room.");
    } else if (scanned.whyLost != ResultSuccess) {
        Warn("Folders of some files could not be saved: " + ErrorText(scanned.whyLost));
    }
    if (scanned.unreadSectors != 0) {
        Warn(CountText(scanned.unreadSectors, "sector") + " in " +
             CountText(scanned.unreadPlaces, "place") +
             " could not be read; --again-unread tries those again.");
    }
    const auto missing = static_cast<std::uint64_t>(
        std::count_if(m_parts.begin(), m_parts.end(), [](const ScanPart& part) {
            return part.isMissing && part.state == PartState::NotScanned;
        }));
    if (missing != 0) {
        Warn(CountText(missing, "part") + " of " + std::to_string(m_parts.size()) +
             " not scanned yet; --resume goes on with them.");
    }
}

ScanOutcome ScanRun::Scanned() const
{
    ScanOutcome sum;
    for (const ScanPart& part : m_parts) {
        const ScanOutcome& one = part.outcome;
        sum.end = one.end != ScanEnd::Complete ? one.end : sum.end;
        sum.why = sum.why != ResultSuccess ? sum.why : one.why;
        sum.found += one.found;
        sum.canGoOn = sum.canGoOn || one.canGoOn;
        sum.lostRecords += one.lostRecords;
        sum.whyLost = sum.whyLost != ResultSuccess ? sum.whyLost : one.whyLost;
        sum.quickFault = sum.quickFault != ResultSuccess ? sum.quickFault : one.quickFault;
        sum.unreadSectors += one.unreadSectors;
        sum.unreadPlaces += one.unreadPlaces;
    }
    return sum;
}

ExitStatus ScanRun::Status() const
{
    if (Cancelled()) {
        return ExitStatus::Cancelled;
    }
    const ScanOutcome scanned = Scanned();
    const bool allParts = std::none_of(m_parts.begin(), m_parts.end(),
                                       [](const ScanPart& part) { return part.isMissing; });
    const bool whole = scanned.unreadSectors == 0 && scanned.whyLost == ResultSuccess &&
                       !m_interrupted && allParts;
    return whole ? ExitStatus::Done : ExitStatus::SomeFailed;
}
