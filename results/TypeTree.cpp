#include "results/TypeTree.h"

#include "texts/TextFormat.h"

namespace {

// "JPG" of "JPG (.jpg)"
std::string_view NameOf(const TypeOption& option)
{
    const std::string_view text = option.text;
    const std::size_t bracket = text.find('(');
    if (bracket == std::string_view::npos) {
        return text;
    }
    return text.substr(0, bracket > 0 ? bracket - 1 : 0);
}

std::string_view ImageOf(const TypeOption& option)
{
    const std::string_view image = option.image;
    return image.substr(0, image.find(' '));
}

}  // namespace

std::string WithCount(std::string_view text, std::size_t count)
{
    return FormatText("%s (%d)", text, count);
}

TypeTree BuildTypeTree(const ExtensionGroups& groups, TypeFilterMap& filter)
{
    TypeTree tree;
    for (const auto& [key, group] : groups) {
        if (group.empty()) {
            continue;
        }
        const TypeOption* const option = LookUpOption(filter, key);
        if (option == nullptr) {
            continue;
        }
        TypeTreeCategory& category = tree.at(static_cast<std::size_t>(option->category));
        category.nodes.push_back({WithCount(NameOf(*option), group.size()),
                                  std::string(ImageOf(*option)), option->extensions, &group});
        category.files += group.size();
    }
    return tree;
}
