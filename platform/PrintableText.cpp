#include "platform/PrintableText.h"

#include "platform/Text.h"

#include <cstdio>

namespace {

// Marks of direction, separators of lines, and what has neither width nor a meaning in a name. Joiners stay: whole
// scripts are written with them.
bool IsMark(char16_t unit)
{
    return unit == 0x061C || unit == 0x180E || unit == 0x200B || unit == 0x200E || unit == 0x200F ||
           (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2060 && unit <= 0x206F) ||
           unit == 0xFEFF || (unit >= 0xFFF9 && unit <= 0xFFFB);
}

}  // namespace

std::string Printable(std::string_view text)
{
    std::u16string shown;
    for (const char16_t unit : Utf8ToUtf16(text)) {
        if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) {
            shown += u'?';
        } else if (IsMark(unit)) {
            char escaped[16] = {};
            std::snprintf(escaped, sizeof escaped, "\\u%04X", unsigned{unit});
            shown += Utf8ToUtf16(escaped);
        } else {
            shown += unit;
        }
    }
    return Utf16ToUtf8(shown);
}
