// Texts compared without regard to case.
#pragma once

#include <string>
#include <string_view>

// UTF-8 in which two texts become one that differ by small and capital letters alone, in all scripts that have them; as far as
// a character is one UTF-16 unit. Bytes that are no UTF-8 become the replacement character.
std::string FoldCase(std::string_view text);
