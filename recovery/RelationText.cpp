#include "recovery/RelationText.h"

namespace {

bool IsDigit(char letter)
{
    return letter >= '0' && letter <= '9';
}

// The decimal number at the start of text; 0 without a digit. Too many digits wrap around.
std::uint64_t LeadingNumber(std::string_view text)
{
    std::uint64_t value = 0;
    for (const char letter : text) {
        if (!IsDigit(letter)) {
            break;
        }
        value = value * 10 + static_cast<std::uint64_t>(letter - '0');
    }
    return value;
}

// Takes the numbers from text, which begins after "- [". Returns how far it went.
std::size_t ParseList(std::string_view text, std::vector<std::uint32_t>& outNumbers)
{
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != ',' && text[at] != ']') {
            continue;
        }
        outNumbers.push_back(
            static_cast<std::uint32_t>(LeadingNumber(text.substr(start, at - start))));
        start = at + 1;
        if (text[at] == ']') {
            return start;
        }
    }
    return text.size();
}

}  // namespace

std::map<std::uint64_t, std::vector<std::uint32_t>> ParseRelationText(std::string_view text)
{
    constexpr std::string_view KeyMark = " | ";
    constexpr std::string_view ListMark = "- [";
    std::map<std::uint64_t, std::vector<std::uint32_t>> relation;
    for (std::size_t at = text.find(KeyMark); at != std::string_view::npos;
         at = text.find(KeyMark, at)) {
        at += KeyMark.size();
        const std::size_t list = text.find(ListMark, at);
        if (list == std::string_view::npos) {
            break;
        }
        const std::uint64_t key = LeadingNumber(text.substr(at, list - at));
        std::vector<std::uint32_t> numbers;
        at = list + ListMark.size();
        at += ParseList(text.substr(at), numbers);
        relation.insert_or_assign(key, std::move(numbers));
    }
    return relation;
}

void AppendRelationEntry(std::uint64_t key,
                         std::span<const std::uint32_t> numbers,
                         std::string& text)
{
    text += " | ";
    text += std::to_string(key);
    text += " - [";
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i != 0) {
            text += ',';
        }
        text += std::to_string(numbers[i]);
    }
    text += ']';
}
