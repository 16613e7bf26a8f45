#include "platform/CaseFold.h"

#include "platform/Text.h"

#include <algorithm>
#include <clocale>
#include <cwctype>

namespace {

// By the way of the capital letter, which two small ones can share: both forms of sigma become one. Half of a pair stays.
char16_t FoldUnit(char16_t unit)
{
    // Comes with the C library. Without it only A to Z are folded.
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unit < 0x80) {
        return static_cast<char16_t>(LowerAscii(static_cast<char>(unit)));
    }
    if (unicode == nullptr) {
        return unit;
    }
    const std::wint_t folded = towlower_l(towupper_l(unit, unicode), unicode);
    return folded <= 0xFFFF ? static_cast<char16_t>(folded) : unit;
}

}  // namespace

std::string FoldCase(std::string_view text)
{
    const bool isAscii = std::all_of(text.begin(), text.end(), [](char letter) {
        return static_cast<unsigned char>(letter) < 0x80;
    });
    if (isAscii) {
        return LowerAscii(text);
    }
    std::u16string units = Utf8ToUtf16(text);
    std::transform(units.begin(), units.end(), units.begin(), FoldUnit);
    return Utf16ToUtf8(units);
}
