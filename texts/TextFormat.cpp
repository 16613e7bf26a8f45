#include "texts/TextFormat.h"

#include "platform/Text.h"

namespace {

std::string LetterText(char32_t letter)
{
    if (letter < 0x10000) {
        const auto unit = static_cast<char16_t>(letter);
        return Utf16ToUtf8(std::u16string_view(&unit, 1));
    }
    // A letter beyond Unicode becomes a lone surrogate here, and so the replacement character.
    const char32_t above = letter - 0x10000;
    const char16_t units[] = {static_cast<char16_t>(0xD800 | ((above >> 10) & 0x3FF)),
                              static_cast<char16_t>(0xDC00 | (above & 0x3FF))};
    return Utf16ToUtf8(std::u16string_view(units, letter <= 0x10FFFF ? 2 : 1));
}

struct WriteArgument
{
    std::string operator()(char32_t letter) const { return LetterText(letter); }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(std::uint64_t number) const { return std::to_string(number); }
    std::string operator()(std::string_view text) const { return std::string(text); }
};

bool TakesArgument(char kind)
{
    return kind == 'c' || kind == 'd' || kind == 's';
}

}  // namespace

std::string FillText(std::string_view format, std::initializer_list<TextArgument> arguments)
{
    std::string out;
    const TextArgument* next = arguments.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        const char kind = i + 1 < format.size() ? format[i + 1] : '\0';
        if (format[i] != '%' || (kind != '%' && !TakesArgument(kind))) {
            out.push_back(format[i]);
            continue;
        }
        ++i;
        if (kind == '%') {
            out.push_back('%');
        } else if (next != arguments.end()) {
            out += std::visit(WriteArgument(), *next++);
        }
    }
    return out;
}
