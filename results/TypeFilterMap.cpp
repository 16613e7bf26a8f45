#include "results/TypeFilterMap.h"

#include "recovery/FileTypeCatalogue.h"
#include "texts/TextFormat.h"

namespace {

template <typename Function>
void ForEachExtension(std::string_view extensions, const Function& function)
{
    while (!extensions.empty()) {
        const std::size_t end = extensions.find('|');
        const std::string_view extension = extensions.substr(0, end);
        if (!extension.empty()) {
            function(std::string(extension));
        }
        extensions.remove_prefix(end == std::string_view::npos ? extensions.size() : end + 1);
    }
}

}  // namespace

void AddOption(TypeFilterMap& filter, const TypeOption& option)
{
    ForEachExtension(option.extensions,
                     [&](const std::string& extension) { filter[extension] = &option; });
}

void RemoveOption(TypeFilterMap& filter, const TypeOption& option)
{
    ForEachExtension(option.extensions,
                     [&](const std::string& extension) { filter.erase(extension); });
}

const TypeOption* LookUpOption(TypeFilterMap& filter, std::string_view extension)
{
    return filter.try_emplace(std::string(extension), nullptr).first->second;
}

std::string WildcardFilter(const TypeFilterMap& filter)
{
    if (filter.empty()) {
        return FormatText("%s|%s|%s", FamilyPhoto, FamilyAudio, FamilyVideo);
    }
    std::string text;
    for (const auto& [extension, option] : filter) {
        text += (text.empty() ? "*." : "|*.") + extension;
    }
    return text;
}

std::string FilterPattern(std::string_view wildcardFilter)
{
    constexpr std::string_view Marked = ".^$+?{}[]";
    std::string pattern;
    char before = '\0';
    for (const char letter : wildcardFilter) {
        if (letter == '*') {
            pattern += before == '\\' ? "" : ".";
        } else {
            if (Marked.find(letter) != std::string_view::npos) {
                pattern += '\\';
            }
            pattern += letter;
        }
        before = letter;
    }
    return pattern;
}
