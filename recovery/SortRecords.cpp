// The order of every list of records and of rows.
#include "platform/Text.h"
#include "recovery/RowSearch.h"
#include "recovery/ScanRecordReader.h"

#include <algorithm>
#include <string>

namespace {

// What an item is sorted by, made once: records are large and lower-casing in a comparison is dear.
struct SortKey
{
    bool isFolder;
    std::string name;
    std::size_t place;
};

const FileRecord& RecordOf(const FileRecord& record)
{
    return record;
}
const FileRecord& RecordOf(const FoundRow& row)
{
    return row.record;
}

template <typename Item>
void SortItems(std::vector<Item>& items)
{
    if (items.size() < 2) {
        return;
    }
    std::vector<SortKey> keys;
    keys.reserve(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        const FileRecord& record = RecordOf(items[i]);
        keys.push_back({record.IsFolder != 0, LowerAscii(record.NameText()), i});
    }
    // std::string compares its bytes as unsigned, which is the order wanted.
    std::sort(keys.begin(), keys.end(), [](const SortKey& left, const SortKey& right) {
        if (left.isFolder != right.isFolder) {
            return right.isFolder;
        }
        const int order = left.name.compare(right.name);
        return order != 0 ? order < 0 : left.place < right.place;
    });
    std::vector<Item> sorted;
    sorted.reserve(items.size());
    for (const SortKey& key : keys) {
        sorted.push_back(items[key.place]);
    }
    items = std::move(sorted);
}

}  // namespace

void SortRecords(FileRecordList& records)
{
    SortItems(records);
}

void SortRows(FoundRowList& rows)
{
    SortItems(rows);
}
