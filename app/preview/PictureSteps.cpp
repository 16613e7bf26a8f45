#include "app/preview/PictureSteps.h"

#include "recovery/FileTypeCatalogue.h"

#include <algorithm>

namespace {

// The name has a full stop, and what follows it is a photo's extension.
bool IsPicture(const FoundRow& row)
{
    std::string extension;
    return ExtensionOf(row.record.NameText(), extension) == ResultSuccess &&
           InFamily(FamilyPhoto, LowerExtensionOf(row.record.NameText()));
}

// The row itself where it stands there. Nodes alone would not do: all carved files have the same.
std::optional<std::size_t> PlaceOf(std::span<const FoundRow> rows, const FoundRow& current)
{
    const auto find = [&](const auto& isIt) {
        return static_cast<std::size_t>(std::find_if(rows.begin(), rows.end(), isIt) -
                                        rows.begin());
    };
    const auto isNode = [&](const FoundRow& row) {
        return row.record.NodeId == current.record.NodeId;
    };
    std::size_t place =
        find([&](const FoundRow& row) { return isNode(row) && row.at == current.at; });
    place = place < rows.size() ? place : find(isNode);
    return place < rows.size() ? std::optional(place) : std::nullopt;
}

}  // namespace

std::optional<std::size_t>
StepToPicture(std::span<const FoundRow> rows, const FoundRow& current, bool isForward)
{
    const std::size_t count = rows.size();
    const std::optional<std::size_t> from = PlaceOf(rows, current);
    const std::size_t start = from.value_or(isForward ? count - 1 : 0);
    for (std::size_t step = 1; step <= count; ++step) {
        const std::size_t place = (start + (isForward ? step : count - step)) % count;
        if (IsPicture(rows[place])) {
            return place;
        }
    }
    return std::nullopt;
}
