// Which types of files are asked for: the options that are ticked, by extension, and the filter texts that follow from them.
#pragma once

#include <map>
#include <string>
#include <string_view>

enum class TypeCategory
{
    Photo,
    Audio,
    Video
};
inline constexpr int TypeCategoryCount = 3;

// An option of the page of types.
struct TypeOption
{
    TypeCategory category = TypeCategory::Photo;
    std::string text;        // "JPG (.jpg)"
    std::string extensions;  // "jpg|jpeg"
    std::string image;       // "file='Icon/photo_jpg.png' dest='20,3,38,21'"
};

// An extension without an option can stand in it too: one that was looked up and that no option had.
using TypeFilterMap = std::map<std::string, const TypeOption*, std::less<>>;

// Puts in all extensions of the option, in place of an earlier option's.
void AddOption(TypeFilterMap& filter, const TypeOption& option);
// Takes out all of its extensions, whichever option stands there.
void RemoveOption(TypeFilterMap& filter, const TypeOption& option);
// Null when there is none, and then the extension stays behind in the filter without one.
const TypeOption* LookUpOption(TypeFilterMap& filter, std::string_view extension);

// "*.jpg|*.png", in the order of the extensions; photos, audio and videos as a whole for an empty filter.
std::string WildcardFilter(const TypeFilterMap& filter);
// The wildcards as the engines read them. "*" stands for one character before the dot, which is less than it seems to
// and is meant so.
std::string FilterPattern(std::string_view wildcardFilter);
