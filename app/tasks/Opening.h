// Opening a target can take as long as a password takes to be typed, or a disk that hangs takes to answer: no thread can end it,
// but it can be left alone.
#pragma once

#include "session/ScanSession.h"

#include <functional>
#include <optional>

// Nothing when the wish to stop came first; what opens then goes on alone, and what it brings is let go of.
std::optional<OpenOutcome> OpenUnless(const std::function<bool()>& isToStop,
                                      const std::function<OpenOutcome()>& open);
