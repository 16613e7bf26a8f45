#include "results/ExtensionGroups.h"

#include "platform/Text.h"

#include <utility>

namespace {

struct Spelling
{
    std::string_view other;
    std::string_view kept;
};

constexpr Spelling Spellings[] = {
    {"jpeg", "jpg"}, {"tiff", "tif"}, {"scr", "pcx"}, {"midi", "mid"}, {"m4p", "m4a"}};

}  // namespace

std::string GroupKeyOf(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    std::string key = LowerAscii(dot == std::string_view::npos ? name : name.substr(dot + 1));
    for (const Spelling& spelling : Spellings) {
        if (key == spelling.other) {
            return std::string(spelling.kept);
        }
    }
    return key;
}

ExtensionGroups BuildGroups(const std::vector<FoundRow>& results)
{
    ExtensionGroups groups;
    for (const FoundRow& row : results) {
        groups[GroupKeyOf(row.record.NameText())].push_back(&row);
    }
    return groups;
}
