// What a user must be told of a scan beside what it found: results that look whole and are not would be trusted.
#pragma once

#include "session/ScanSession.h"

#include <string>
#include <vector>

class LanguageSection;

// One sentence or two each, of the section "Desktop", for all targets of a scan together; empty when nothing is missing.
std::vector<std::string> ScanRemarks(const std::vector<ScanOutcome>& outcomes,
                                     LanguageSection& desktop);
