// What a face holds as long as it runs, and where all its tasks begin: the list of targets, their opening, the log of scans.
#pragma once

#include "session/ScanHistory.h"
#include "session/ScanSession.h"
#include "session/TargetList.h"
#include "session/TargetResolver.h"

#include <functional>
#include <memory>
#include <string>

// Any thread may call it, also while tasks run on others.
class Session
{
public:
    Session();
    // With other engines, for tests.
    explicit Session(std::shared_ptr<IEngineMaker> engines);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    // Disks that the user may not read are opened with an administrator's consent from now on, which is asked for then.
    static void AskForRights();

    TargetList ListTargets(const ProgressFunction& progress = {});
    ResolvedTarget Resolve(const std::string& text);
    OpenOutcome Open(const ScanTarget& target, ScanDepth depth) const;
    // The same for later, also on a thread that outlives this: an opening can hang, and is left alone then.
    std::function<OpenOutcome()> Opener(const ScanTarget& target, ScanDepth depth) const;
    ScanHistory& History() { return *m_history; }

private:
    std::shared_ptr<IEngineMaker> m_engines;
    std::shared_ptr<ScanHistory> m_history;  // shared with open targets
    TargetLister m_lister;
};
