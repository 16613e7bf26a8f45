#include "recovery/FileRecord.h"

#include "platform/Text.h"

#include <cstring>

void StoreName(char (&field)[NameCapacity], std::string_view name)
{
    const std::string fitting = CutName(name.substr(0, name.find('\0')), NameCapacity - 1);
    std::memset(field, 0, NameCapacity);
    std::memcpy(field, fitting.data(), fitting.size());
}

void FileRecord::SetName(std::string_view name)
{
    StoreName(Name, name);
}
