// The report on restored files as a text file.
#pragma once

#include "app/tasks/ProgressBoard.h"

#include <string>
#include <string_view>
#include <vector>

class LanguageSection;

// UTF-8: title and time, a line a file with what became of it and what of it is missing, and the summary. What failed stands
// first, then what is damaged. No name can end its line or turn it around.
std::string RestoreReportText(const std::vector<ReportRow>& rows,
                              std::string_view summary,
                              LanguageSection& extras);

// "Missing: 4.00 KB"; empty for a file that is whole.
std::string DamageText(const ReportRow& row, LanguageSection& extras);
