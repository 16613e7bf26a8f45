// What a user must be told of a scan beside what it found: results that look whole and are not would be trusted.
#pragma once

#include "session/ScanSession.h"

#include <string>
#include <vector>

class LanguageSection;

// One sentence or two each, of the section "Desktop", for all targets of a scan together; empty when nothing is missing.
std::vector<std::string> ScanRemarks(const std::vector<ScanOutcome>& outcomes,
                                     LanguageSection& desktop);

// Why a target could not be opened; of the sections "Desktop" and "Extras".
std::string
ReasonOf(const TargetRefusal& refusal, LanguageSection& desktop, LanguageSection& extras);

// What an earlier scan that would be resumed lacks; empty for a complete one. Of the section "Extras".
std::string RemarkOnEarlier(const EarlierScan& earlier, LanguageSection& extras);
