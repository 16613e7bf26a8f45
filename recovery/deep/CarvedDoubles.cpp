#include "recovery/deep/CarvedDoubles.h"

#include "recovery/FileTypeCatalogue.h"

#include <algorithm>
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
void DropAnalysedDoubles(const std::vector<Item>& quick,
                         const FirstDataSectorFunction& firstDataSector,
                         const KeepLooking& keepLooking,
                         std::vector<Item>& analysed)
{
    using Key = std::tuple<std::uint64_t, std::uint64_t, std::string>;
    const auto keyOf = [](const FileRecord& record) {
        return Key{std::uint64_t{record.FileSize}, std::uint64_t{record.CreationTime},
                   LowerExtensionOf(record.NameText())};
    };
    std::multimap<Key, const FileRecord*> shown;
    for (const Item& item : quick) {
        shown.emplace(keyOf(RecordOf(item)), &RecordOf(item));
    }
    std::erase_if(analysed, [&](const Item& item) {
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
    });
}

template <typename Item>
void DropCarvedDoubles(const std::vector<Item>& known,
                       const FirstDataSectorFunction& firstDataSector,
                       const KeepLooking& keepLooking,
                       std::vector<Item>& carved)
{
    // Telling a first sector can take a read: only sectors where something was carved matter.
    std::unordered_map<std::uint64_t, std::optional<std::string>> extensions;
    for (const Item& item : carved) {
        extensions.try_emplace(std::uint64_t{RecordOf(item).EntrySector});
    }
    if (extensions.empty()) {
        return;
    }
    for (const Item& item : known) {
        if (keepLooking() != ResultSuccess) {
            break;
        }
        const FileRecord& record = RecordOf(item);
        if (const std::optional<std::uint64_t> sector = firstDataSector(record)) {
            if (const auto found = extensions.find(*sector); found != extensions.end()) {
                found->second = LowerExtensionOf(record.NameText());
            }
        }
    }
    std::erase_if(carved, [&](const Item& item) {
        const FileRecord& record = RecordOf(item);
        const std::optional<std::string>& extension =
            extensions.at(std::uint64_t{record.EntrySector});
        if (!extension) {
            return false;
        }
        const std::string own = LowerExtensionOf(record.NameText());
        return *extension == own || (*extension == "thm" && own == "jpg");
    });
}

template void DropAnalysedDoubles(const FileRecordList&,
                                  const FirstDataSectorFunction&,
                                  const KeepLooking&,
                                  FileRecordList&);
template void DropAnalysedDoubles(const FoundRowList&,
                                  const FirstDataSectorFunction&,
                                  const KeepLooking&,
                                  FoundRowList&);
template void DropCarvedDoubles(const FileRecordList&,
                                const FirstDataSectorFunction&,
                                const KeepLooking&,
                                FileRecordList&);
template void DropCarvedDoubles(const FoundRowList&,
                                const FirstDataSectorFunction&,
                                const KeepLooking&,
                                FoundRowList&);
