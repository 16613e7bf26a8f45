// What is told of a found file when the mouse rests on its row.
#pragma once

#include "recovery/FileRecord.h"

#include <string>
#include <string_view>

class LanguageSection;

// Lines: the whole name, the folder as far as it is known ("DCIM\100\"), size, times, and whether the beginning is intact.
// Nothing in a name ends a line, hides or turns the text.
std::string RowTip(const FileRecord& record, std::string_view folder, LanguageSection& extras);
