// What the session says in values, in English: refusals that also tell what to do, and the state of an earlier scan.
#pragma once

#include "cli/Command.h"
#include "session/Destination.h"
#include "session/ImageTask.h"
#include "session/ScanHistory.h"
#include "session/ScanTarget.h"

#include <string>

Refusal WhyNot(const TargetRefusal& refusal);
Refusal WhyNot(const LockOutcome& lock);
Refusal WhyNot(const DestinationCheck& check, const std::filesystem::path& folder);
Refusal WhyNot(const ImageProblem& problem, const ImageTask& image, const std::string& source);
// A list of types that is none.
Refusal WhyNoTypes(const std::string& list);
// What ended a whole task: no memory, or worse.
Refusal WhyBroken(ResultCode fault);

// "complete, 2024-05-17T08:30:12, 12 files" or "stopped at 40 %, ...".
std::string DescribeScan(const EarlierScan& scan);
// "complete", "stopped at 40 %", "gone".
std::string StateOf(const EarlierScan& scan);
