// The search with what a list of files needs beside the record.
#pragma once

#include "recovery/FoundRow.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

using FoundRowList = std::vector<FoundRow>;

// Of the engines that search their own stores.
class IRowSearch
{
public:
    IRowSearch() = default;
    IRowSearch(const IRowSearch&) = delete;
    IRowSearch& operator=(const IRowSearch&) = delete;
    virtual ~IRowSearch() = default;
    // As SearchRecords: the same files in the same order.
    virtual std::int32_t SearchRows(std::string_view extensionPattern, FoundRowList& outRows) = 0;
};

// The order of SearchRecords.
void SortRows(std::span<FoundRow> rows);
