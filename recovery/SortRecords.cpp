// The order of every list of records and of rows.
#include "platform/Text.h"
#include "recovery/RowSearch.h"
#include "recovery/ScanRecordReader.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <vector>

namespace {

// What an item is sorted by: records are large, and most names differ in their first bytes.
struct SortKey
{
    std::uint64_t start = 0;  // folders after files, then the first bytes of the name, lower-cased
    std::uint32_t place = 0;
};

constexpr std::size_t StartBytes = 7;

const FileRecord& RecordOf(const FileRecord& record)
{
    return record;
}
const FileRecord& RecordOf(const FoundRow& row)
{
    return row.record;
}

std::uint64_t StartOf(const FileRecord& record)
{
    const std::string_view name = record.NameText();
    std::uint64_t start = record.IsFolder != 0 ? 1 : 0;
    for (std::size_t i = 0; i < StartBytes; ++i) {
        const auto letter = i < name.size() ? LowerAscii(name[i]) : '\0';
        start = start << 8U | static_cast<std::uint8_t>(letter);
    }
    return start;
}

// Below 0 when the left name comes first. Bytes compare as unsigned.
int CompareNames(std::string_view left, std::string_view right)
{
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < common; ++i) {
        const auto a = static_cast<std::uint8_t>(LowerAscii(left[i]));
        const auto b = static_cast<std::uint8_t>(LowerAscii(right[i]));
        if (a != b) {
            return a < b ? -1 : 1;
        }
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

// Each item goes to its place along the rings that the order makes; one item is held aside at a time.
template <typename Item>
void Arrange(std::span<Item> items, std::vector<SortKey>& keys)
{
    for (std::uint32_t first = 0; first < keys.size(); ++first) {
        if (keys[first].place == first) {
            continue;
        }
        const Item held = items[first];
        std::uint32_t at = first;
        while (keys[at].place != first) {
            const std::uint32_t from = keys[at].place;
            items[at] = items[from];
            keys[at].place = at;
            at = from;
        }
        items[at] = held;
        keys[at].place = at;
    }
}

template <typename Item>
void SortItems(std::span<Item> items)
{
    std::vector<SortKey> keys(items.size());
    for (std::uint32_t i = 0; i < items.size(); ++i) {
        keys[i] = {StartOf(RecordOf(items[i])), i};
    }
    std::sort(keys.begin(), keys.end(), [items](const SortKey& left, const SortKey& right) {
        if (left.start != right.start) {
            return left.start < right.start;
        }
        const int order = CompareNames(RecordOf(items[left.place]).NameText(),
                                       RecordOf(items[right.place]).NameText());
        return order != 0 ? order < 0 : left.place < right.place;
    });
    Arrange(items, keys);
}

}  // namespace

void SortRecords(std::span<FileRecord> records)
{
    SortItems(records);
}

void SortRows(std::span<FoundRow> rows)
{
    SortItems(rows);
}
