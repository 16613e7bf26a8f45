// Names and paths from disks where somebody reads them: nothing in them moves the text around it, or hides.
#pragma once

#include <string>
#include <string_view>

// Control characters, which could be commands to a terminal, become "?", marks that turn the direction of writing or cannot be
// seen "\u202E", and bytes that are no UTF-8 the replacement character.
std::string Printable(std::string_view text);
