// What the session says in values, in English: refusals that also tell what to do, and the state of an earlier scan.
#pragma once

#include "cli/Command.h"
#include "session/Destination.h"
#include "session/ImageTask.h"
#include "session/RestoreFiles.h"
#include "session/ScanHistory.h"
#include "session/ScanTarget.h"
#include "session/TargetContent.h"
#include "session/TargetList.h"
#include "session/TypeFilter.h"

#include <string>
#include <variant>

Refusal WhyNot(const TargetRefusal& refusal);
Refusal WhyNot(const LockOutcome& lock);
Refusal WhyNot(const DestinationCheck& check, const std::filesystem::path& folder);
Refusal WhyNot(const ImageProblem& problem, const ImageTask& image, const std::string& source);
// More than the destination takes.
Refusal WhyNot(const DestinationRoom& room, const std::filesystem::path& folder);
// Scan records would be written onto the source.
Refusal WhyNoRecordsIn(const std::filesystem::path& folder);
// The filter of a list of types, or why it is none.
std::variant<TypeFilter, Refusal> FilterOf(const std::string& list);
// What ended a whole task: no memory, or worse.
Refusal WhyBroken(ResultCode fault);

// A quick scan of what it cannot read.
Refusal WhyNotQuick(const TargetRefusal& refusal, const TargetContent& content);
// A sentence about what was recognised and is not understood, and what a scan can do there; empty for the rest.
std::string WordsFor(const TargetContent& content, bool isQuick);
// What else can be tried where the quick stage has failed; begins with a space.
std::string WhatElse(const CommandOptions& options);
// "Part 2 (partition, FAT32, 20.0 MB)".
std::string NameOfPart(const TargetRow& row);
// "partition", "gap", "disk".
std::string_view KindName(TargetKind kind);

// What is told of a file beside its path; empty when all is well, or when it was not tried.
std::string WhatWentWrong(const FileOutcome& outcome);
// "restored", "skipped", "incomplete", "damaged", "failed", "notTried".
std::string_view StateOf(const FileOutcome& outcome);

// "complete, 2024-05-17T08:30:12, 12 files" or "stopped at 40 %, ...".
std::string DescribeScan(const EarlierScan& scan);
// "complete", "stopped at 40 %", "gone".
std::string StateOf(const EarlierScan& scan);
