// Text conversion: everything below the windows is UTF-8; sources hold UTF-16 and code page 437.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

// UTF-16 units to UTF-8. A lone surrogate becomes U+FFFD. Stops at nothing: a zero unit is kept as NUL.
std::string Utf16ToUtf8(std::u16string_view text);
// UTF-8 to UTF-16. Bytes that are no UTF-8 become U+FFFD.
std::u16string Utf8ToUtf16(std::string_view text);
// The units up to the first zero.
std::u16string_view UntilZero(std::u16string_view text);
// One byte a character, as DOS wrote short names.
std::string CodePage437ToUtf8(std::string_view bytes);

// A to Z become a to z; all other bytes stay.
std::string LowerAscii(std::string_view text);
char LowerAscii(char letter);
bool EqualIgnoringAsciiCase(std::string_view left, std::string_view right);

// A name or path as a terminal or a text file may show it: control characters, which could be commands or end a line, become
// "?", marks that turn the direction of writing or cannot be seen "\u202E", and bytes that are no UTF-8 the replacement
// character.
std::string Printable(std::string_view text);

// The text cut to at most maxBytes, at a code point.
std::string CutText(std::string_view text, std::size_t maxBytes);
// The name cut to at most maxBytes in its stem, at a code point, so that the last extension stays. An
// extension that is too long itself is cut as plain text.
std::string CutName(std::string_view name, std::size_t maxBytes);

// For a manual page, as plain text: a hyphen is one, and no line is taken for an instruction.
std::string ManualText(std::string_view text);
