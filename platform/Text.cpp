#include "platform/Text.h"

#include <cstdio>

namespace {

constexpr char32_t Replacement = 0xFFFD;

// The upper half of code page 437, 0x80 to 0xFF. All of these lie in the basic plane.
constexpr char16_t CodePage437High[] = u"ÇüéâäàåçêëèïîìÄÅ"
                                       u"ÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
                                       u"áíóúñÑªº¿⌐¬½¼¡«»"
                                       u"░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                       u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧"
                                       u"╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                       u"αßΓπΣσµτΦΘΩδ∞φε∩"
                                       u"≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";
static_assert(std::size(CodePage437High) == 128 + 1);

void AppendUtf8(std::string& out, char32_t point)
{
    const auto put = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | (point >> 6));
        put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        put(0xE0 | (point >> 12));
        put(0x80 | ((point >> 6) & 0x3F));
        put(0x80 | (point & 0x3F));
    } else {
        put(0xF0 | (point >> 18));
        put(0x80 | ((point >> 12) & 0x3F));
        put(0x80 | ((point >> 6) & 0x3F));
        put(0x80 | (point & 0x3F));
    }
}

bool IsHighSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(char16_t unit)
{
    return (unit & 0xFC00) == 0xDC00;
}
bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// Reads one code point at *at and moves it; a malformed byte is stepped over alone.
char32_t NextUtf8(std::string_view text, std::size_t* at)
{
    const auto first = static_cast<unsigned char>(text[(*at)++]);
    if (first < 0x80) {
        return first;
    }
    const std::size_t more = first >= 0xF0 && first < 0xF5 ? 3 : first >= 0xE0 ? 2 : 1;
    if (first < 0xC2 || first > 0xF4 || more > text.size() - *at) {
        return Replacement;
    }
    char32_t point = first & (0x3Fu >> more);
    for (std::size_t i = 0; i < more; ++i) {
        if (!IsContinuation(text[*at + i])) {
            return Replacement;
        }
        point = point << 6 | (static_cast<unsigned char>(text[*at + i]) & 0x3Fu);
    }
    constexpr char32_t Least[] = {0, 0x80, 0x800, 0x10000};
    const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
    if (point < Least[more] || point > 0x10FFFF || surrogate) {
        return Replacement;
    }
    *at += more;
    return point;
}

// The longest prefix of at most maxBytes that does not split a code point.
std::string_view PrefixAtCodePoint(std::string_view text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes) {
        return text;
    }
    while (maxBytes > 0 && IsContinuation(text[maxBytes])) {
        --maxBytes;
    }
    return text.substr(0, maxBytes);
}

}  // namespace

std::string Utf16ToUtf8(std::u16string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (IsHighSurrogate(unit) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            const char32_t high = unit & 0x3FFu;
            const char32_t low = text[++i] & 0x3FFu;
            AppendUtf8(out, 0x10000 + (high << 10 | low));
        } else {
            AppendUtf8(out, IsHighSurrogate(unit) || IsLowSurrogate(unit) ? Replacement : unit);
        }
    }
    return out;
}

std::u16string Utf8ToUtf16(std::string_view text)
{
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const char32_t point = NextUtf8(text, &at);
        if (point < 0x10000) {
            out.push_back(static_cast<char16_t>(point));
        } else {
            out.push_back(static_cast<char16_t>(0xD800 | ((point - 0x10000) >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 | (point & 0x3FF)));
        }
    }
    return out;
}

std::u16string_view UntilZero(std::u16string_view text)
{
    return text.substr(0, text.find(u'\0'));
}

std::string CodePage437ToUtf8(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        AppendUtf8(out, value < 0x80 ? value : CodePage437High[value - 0x80]);
    }
    return out;
}

char LowerAscii(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

std::string LowerAscii(std::string_view text)
{
    std::string out(text);
    for (char& letter : out) {
        letter = LowerAscii(letter);
    }
    return out;
}

bool EqualIgnoringAsciiCase(std::string_view left, std::string_view right)
{
    if (left.size() != right.size()) {
        return false;
    }
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (LowerAscii(left[i]) != LowerAscii(right[i])) {
            return false;
        }
    }
    return true;
}

std::string CutText(std::string_view text, std::size_t maxBytes)
{
    return std::string(PrefixAtCodePoint(text, maxBytes));
}

std::string CutName(std::string_view name, std::size_t maxBytes)
{
    if (name.size() <= maxBytes) {
        return std::string(name);
    }
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || name.size() - dot > maxBytes) {
        return std::string(PrefixAtCodePoint(name, maxBytes));
    }
    const std::string_view extension = name.substr(dot);
    std::string out(PrefixAtCodePoint(name.substr(0, dot), maxBytes - extension.size()));
    out += extension;
    return out;
}

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

std::string ManualText(std::string_view text)
{
    std::string plain;
    bool lineBegins = true;
    for (const char c : text) {
        if (lineBegins && (c == '.' || c == '\'')) {
            plain += "\\&";
        }
        lineBegins = c == '\n';
        if (c == '\\') {
            plain += "\\e";
        } else if (c == '-') {
            plain += "\\-";
        } else {
            plain += c;
        }
    }
    return plain;
}
