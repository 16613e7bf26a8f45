#include "results/SelectionMap.h"

#include <algorithm>
#include <limits>

SelectionKey KeyOf(const FoundRow& row)
{
    const SelectionKey letter = row.record.DriveLetter;
    const SelectionKey kind = row.record.EngineKind & 0xFFFFU;
    return letter << 48U | kind << 32U | row.at.place;
}

void SetSelected(SelectionMap& selection, const FoundRow& row, bool selected)
{
    if (selected) {
        selection.try_emplace(KeyOf(row), row);
    } else {
        selection.erase(KeyOf(row));
    }
}

std::uint64_t SelectedBytes(const SelectionMap& selection)
{
    constexpr auto Most = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    std::uint64_t sum = 0;
    for (const auto& [key, row] : selection) {
        sum += std::min(std::uint64_t{row.record.FileSize}, Most - sum);
    }
    return sum;
}
