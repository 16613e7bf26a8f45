#include "recovery/deep/CarvedDoubles.h"

#include "recovery/FileTypeCatalogue.h"

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>

namespace {

const FileRecord& RecordOf(const FileRecord& record)
{
    return record;
}
const FileRecord& RecordOf(const FoundRow& row)
{
    return row.record;
}

}  // namespace

template <typename Item>
void DropAnalysedDoubles(std::vector<Item>& items,
                         std::size_t quickCount,
                         const FirstDataSectorFunction& firstDataSector,
                         const KeepLooking& keepLooking)
{
    using Key = std::tuple<std::uint64_t, std::uint64_t, std::string>;
    const auto keyOf = [](const FileRecord& record) {
        return Key{std::uint64_t{record.FileSize}, std::uint64_t{record.CreationTime},
                   LowerExtensionOf(record.NameText())};
    };
    const auto analysed = items.begin() + static_cast<std::ptrdiff_t>(quickCount);
    std::multimap<Key, const FileRecord*> shown;
    std::for_each(items.begin(), analysed,
                  [&](const Item& item) { shown.emplace(keyOf(RecordOf(item)), &RecordOf(item)); });
    const auto isDouble = [&](const Item& item) {
        const FileRecord& record = RecordOf(item);
        const auto [first, last] = shown.equal_range(keyOf(record));
        if (first == last || keepLooking() != ResultSuccess) {
            return false;
        }
        const std::optional<std::uint64_t> sector = firstDataSector(record);
        const auto same = std::find_if(first, last, [&](const auto& other) {
            return firstDataSector(*other.second) == sector;
        });
        if (same == last) {
            return false;
        }
        shown.erase(same);  // one for one
        return true;
    };
    items.erase(std::remove_if(analysed, items.end(), std::ref(isDouble)), items.end());
}

template <typename Item>
void DropCarvedDoubles(std::vector<Item>& items,
                       std::size_t knownCount,
                       const FirstDataSectorFunction& firstDataSector,
                       const KeepLooking& keepLooking)
{
    const auto carved = items.begin() + static_cast<std::ptrdiff_t>(knownCount);
    // Telling a first sector can take a read: only sectors where something was carved matter. Which known item begins there.
    constexpr std::size_t None = SIZE_MAX;
    std::unordered_map<std::uint64_t, std::size_t> knownAt;
    if (knownCount != 0) {
        std::for_each(carved, items.end(), [&](const Item& item) {
            knownAt.try_emplace(std::uint64_t{RecordOf(item).EntrySector}, None);
        });
    }
    if (knownAt.empty()) {
        return;
    }
    for (std::size_t i = 0; i < knownCount && keepLooking() == ResultSuccess; ++i) {
        if (const std::optional<std::uint64_t> sector = firstDataSector(RecordOf(items[i]))) {
            if (const auto found = knownAt.find(*sector); found != knownAt.end()) {
                found->second = i;
            }
        }
    }
    const auto isDouble = [&](const Item& item) {
        const std::size_t known = knownAt.at(std::uint64_t{RecordOf(item).EntrySector});
        if (known == None) {
            return false;
        }
        const std::string extension = LowerExtensionOf(RecordOf(items[known]).NameText());
        const std::string own = LowerExtensionOf(RecordOf(item).NameText());
        return extension == own || (extension == "thm" && own == "jpg");
    };
    items.erase(std::remove_if(carved, items.end(), isDouble), items.end());
}

template void DropAnalysedDoubles(FileRecordList&,
                                  std::size_t,
                                  const FirstDataSectorFunction&,
                                  const KeepLooking&);
template void
DropAnalysedDoubles(FoundRowList&, std::size_t, const FirstDataSectorFunction&, const KeepLooking&);
template void
DropCarvedDoubles(FileRecordList&, std::size_t, const FirstDataSectorFunction&, const KeepLooking&);
template void
DropCarvedDoubles(FoundRowList&, std::size_t, const FirstDataSectorFunction&, const KeepLooking&);
