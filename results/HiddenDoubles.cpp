#include "results/HiddenDoubles.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <unordered_set>

namespace {

using Place = std::tuple<std::uint16_t, std::uint32_t, std::uint32_t>;  // letter, store, place

Place PlaceOf(const FoundRow& row, const StorePlace& at)
{
    return {std::uint16_t{row.record.DriveLetter}, at.store, at.place};
}

bool HasOption(const TypeFilterMap& filter, const std::string& key)
{
    const auto found = filter.find(key);
    return found != filter.end() && found->second != nullptr;
}

template <typename Visit>
void ForEachRow(const ExtensionGroups& groups, const TypeFilterMap& filter, const Visit& visit)
{
    for (const auto& [key, group] : groups) {
        if (HasOption(filter, key)) {
            std::for_each(group.begin(), group.end(), visit);
        }
    }
}

}  // namespace

std::vector<DoubleRow> DoublesIn(const ExtensionGroups& groups, const TypeFilterMap& filter)
{
    std::map<Place, const FoundRow*> shown;
    ForEachRow(groups, filter, [&shown](const FoundRow* row) {
        if (row->doubleOf) {
            shown.emplace(PlaceOf(*row, *row->doubleOf), nullptr);
        }
    });
    if (shown.empty()) {
        return {};
    }
    ForEachRow(groups, filter, [&shown](const FoundRow* row) {
        if (const auto found = shown.find(PlaceOf(*row, row->at)); found != shown.end()) {
            found->second = row;
        }
    });
    std::vector<DoubleRow> doubles;
    ForEachRow(groups, filter, [&](const FoundRow* row) {
        const FoundRow* other = row->doubleOf ? shown.at(PlaceOf(*row, *row->doubleOf)) : nullptr;
        if (other != nullptr && other != row && !other->doubleOf) {
            doubles.push_back({row, other});
        }
    });
    return doubles;
}

void LeaveOut(ExtensionGroups& groups, const std::vector<DoubleRow>& doubles)
{
    std::unordered_set<const FoundRow*> rows;
    for (const DoubleRow& one : doubles) {
        rows.insert(one.row);
    }
    for (auto& [key, group] : groups) {
        std::erase_if(group, [&rows](const FoundRow* row) { return rows.contains(row); });
    }
}

void MoveTicks(SelectionMap& selection, const std::vector<DoubleRow>& doubles)
{
    for (const DoubleRow& one : doubles) {
        if (selection.contains(KeyOf(*one.row))) {
            SetSelected(selection, *one.shown, true);
        }
    }
    std::vector<Place> ticked;
    ticked.reserve(selection.size());
    for (const auto& [key, kept] : selection) {
        const FoundRow row = kept.Row();
        ticked.push_back(PlaceOf(row, row.at));
    }
    std::sort(ticked.begin(), ticked.end());
    std::erase_if(selection, [&ticked](const auto& entry) {
        const FoundRow row = entry.second.Row();
        return row.doubleOf &&
               std::binary_search(ticked.begin(), ticked.end(), PlaceOf(row, *row.doubleOf));
    });
}
