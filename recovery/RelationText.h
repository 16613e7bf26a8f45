// The text of a _Relation file: for each key " | <key> - [<number>,<number>...]", keys ascending, no line ends.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Any bytes are accepted; what is no entry is skipped. "[]" comes back as one number 0, a list that is cut
// off keeps the numbers that were complete, and a key that comes again replaces its first list.
std::map<std::uint64_t, std::vector<std::uint32_t>> ParseRelationText(std::string_view text);

// Appends one entry to text.
void AppendRelationEntry(std::uint64_t key,
                         std::span<const std::uint32_t> numbers,
                         std::string& text);
