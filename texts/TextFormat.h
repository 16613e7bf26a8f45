// Fills texts that come from files which users edit: placeholders are checked against what is there.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

// A letter, a number or a text; a text is looked at only during the call.
using TextArgument = std::variant<char32_t, std::int64_t, std::uint64_t, std::string_view>;

// %c, %d and %s each take the next argument, %% gives a percent sign. What does not fit does no harm:
// an argument of another kind is written in its own form, one that is missing leaves nothing, one too
// many is not shown, and a percent sign before anything else stays as it stands.
std::string FillText(std::string_view format, std::initializer_list<TextArgument> arguments);

inline TextArgument ToTextArgument(std::string_view text)
{
    return text;
}
inline TextArgument ToTextArgument(char32_t letter)
{
    return letter;
}
inline TextArgument ToTextArgument(char letter)
{
    return char32_t{static_cast<unsigned char>(letter)};
}
inline TextArgument ToTextArgument(char16_t letter)
{
    return char32_t{letter};
}
template <std::signed_integral T>
TextArgument ToTextArgument(T number)
{
    return std::int64_t{number};
}
template <std::unsigned_integral T>
TextArgument ToTextArgument(T number)
{
    return std::uint64_t{number};
}

// FormatText("%s %d%%", label, percent)
template <typename... Arguments>
std::string FormatText(std::string_view format, const Arguments&... arguments)
{
    return FillText(format, {ToTextArgument(arguments)...});
}
