// "image --rescue": what it says while it runs, and in the end.
#pragma once

#include "cli/Command.h"
#include "session/RescueTask.h"

#include <string>

// Whether a question about the image was answered with yes.
using ImageQuestion = bool (*)(const ImageProblem& problem,
                               const std::string& name,
                               const CommandOptions& options,
                               CommandStreams& streams);

ExitStatus RunRescue(const ScanTarget& source,
                     const CommandOptions& options,
                     CommandStreams& streams,
                     ImageQuestion isAllowed);

// "Rescuing, pass 1: 42%, 1.2 GB rescued, 512 B bad in 1 place, 35.0 MB/s [+++??--+]", in so many columns; the strip only
// where there is room for one.
std::string RescueText(const RescueProgress& progress, std::size_t columns);
