#include "results/RowOrder.h"

#include "platform/Text.h"

#include <algorithm>
#include <numeric>
#include <string>

namespace {

// The column whose text a header sorts by. These are the places of an older order of columns and are kept: dates sort by what
// stands there, not by what the header says.
FileColumn SortedColumn(FileColumn header)
{
    switch (header) {
    case FileColumn::Path:
        return FileColumn::Size;
    case FileColumn::Type:
        return FileColumn::CreatedTime;
    case FileColumn::ModifiedTime:
        return FileColumn::Path;
    case FileColumn::CreatedTime:
        return FileColumn::Type;
    case FileColumn::CheckAll:
    case FileColumn::FileName:
    case FileColumn::Size:
        break;
    }
    return FileColumn::FileName;
}

template <typename Key>
std::vector<std::uint32_t> RanksOf(const std::vector<Key>& keys)
{
    std::vector<std::uint32_t> order(keys.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&keys](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    std::vector<std::uint32_t> ranks(keys.size());
    std::uint32_t rank = 0;
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && keys[order[i - 1]] < keys[order[i]]) {
            ++rank;
        }
        ranks[order[i]] = rank;
    }
    return ranks;
}

}  // namespace

SortDirection NextDirection(FileColumn header, SortDirection now)
{
    switch (header) {
    case FileColumn::FileName:
    case FileColumn::Type:
        return now == 1 ? -1 : 1;
    case FileColumn::Size:
    case FileColumn::ModifiedTime:
    case FileColumn::CreatedTime:
        return now == -1 ? 1 : -1;
    case FileColumn::CheckAll:
    case FileColumn::Path:
        break;
    }
    return now;
}

std::vector<std::uint32_t> SortRanks(const std::vector<const FileRecord*>& rows, FileColumn header)
{
    if (header == FileColumn::Size) {
        // Folders stand before files; all folders are equal.
        std::vector<std::pair<bool, std::uint64_t>> keys;
        keys.reserve(rows.size());
        for (const FileRecord* row : rows) {
            const bool isFile = row->IsFolder == 0;
            keys.emplace_back(isFile, isFile ? std::uint64_t{row->FileSize} : 0);
        }
        return RanksOf(keys);
    }
    std::vector<std::string> keys;
    keys.reserve(rows.size());
    for (const FileRecord* row : rows) {
        keys.push_back(LowerAscii(ColumnText(*row, SortedColumn(header))));
    }
    return RanksOf(keys);
}
