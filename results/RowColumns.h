// What the list of found files shows of a file.
#pragma once

#include "recovery/FileRecord.h"

#include <string>

enum class FileColumn
{
    CheckAll,
    FileName,
    Size,
    ModifiedTime,
    CreatedTime,
    Path,
    Type
};
inline constexpr int FileColumnCount = 7;

// What stands where a date is not known, and in place of all paths.
inline constexpr const char* NoValueText = "    ----    ";

// Empty for the column of the marks, and for the size of a folder.
std::string ColumnText(const FileRecord& record, FileColumn column);
